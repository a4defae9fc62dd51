# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)
lumora_test(actions/tst_saveformats.cpp rules)
lumora_test(actions/tst_save_image_as.cpp windows)
lumora_test(actions/tst_save_thumbnail.cpp windows)
