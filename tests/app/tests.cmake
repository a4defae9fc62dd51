# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)
lumora_test(app/tst_mediatypes.cpp rules)
lumora_test(app/tst_commandline.cpp rules)
lumora_test(app/tst_settings.cpp rules)
