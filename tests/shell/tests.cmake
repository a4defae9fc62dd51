# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)
lumora_test(shell/tst_frmPreferences.cpp windows)
lumora_test(shell/tst_associations.cpp rules)
lumora_test(shell/tst_frmPreferences_associations.cpp windows)
