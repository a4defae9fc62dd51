# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)
lumora_test(platform/tst_filepath.cpp rules)
lumora_test(platform/tst_files.cpp rules)
lumora_test(platform/tst_instance.cpp rules)
