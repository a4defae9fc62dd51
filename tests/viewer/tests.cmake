lumora_test(viewer/tst_fit.cpp rules)
lumora_test(viewer/tst_display.cpp windows)
lumora_test(viewer/tst_listfile.cpp rules)
lumora_test(viewer/tst_foldersearch.cpp rules)
lumora_test(viewer/tst_lists.cpp windows)
lumora_test(viewer/tst_listload.cpp windows)
<<<<<<< HEAD
lumora_test(viewer/tst_wmp9.cpp windows)
lumora_test(viewer/tst_select_folder.cpp windows)
=======
lumora_test(viewer/tst_select_folder.cpp windows)
lumora_test(viewer/tst_wmp9.cpp windows)
>>>>>>> app
