# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)
lumora_test(roads/tst_start_and_end.cpp windows)
add_dependencies(tst_start_and_end lumora)
