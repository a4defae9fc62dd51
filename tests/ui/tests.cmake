# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)
lumora_test(ui/tst_listbox.cpp windows)
lumora_test(ui/tst_icons.cpp windows)
lumora_test(ui/tst_accessible.cpp windows)
