# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)
lumora_test(roads/tst_lumora_dev.cpp rules)
add_dependencies(tst_lumora_dev lumora-dev)
