lumora_test(viewer/tst_fit.cpp rules)
lumora_test(viewer/tst_display.cpp windows)
lumora_test(viewer/tst_listfile.cpp rules)
lumora_test(viewer/tst_foldersearch.cpp rules)
