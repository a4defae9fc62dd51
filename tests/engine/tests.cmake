# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)

lumora_test(engine/tst_samples.cpp rules)
