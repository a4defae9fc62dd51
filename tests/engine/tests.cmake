# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)

add_library(lumora_test_engine STATIC engine/enginefiles.cpp)
target_link_libraries(lumora_test_engine PUBLIC lumora_test_support PRIVATE lumora_options)

lumora_test(engine/tst_decode.cpp rules)
lumora_test(engine/tst_hostile.cpp rules)
lumora_test(engine/tst_missingmodule.cpp rules)
lumora_test(engine/tst_picturecache.cpp rules)
lumora_test(engine/tst_samples.cpp rules)
foreach(name tst_decode tst_hostile tst_missingmodule tst_picturecache)
    target_link_libraries(${name} PRIVATE lumora_test_engine)
endforeach()
lumora_test(engine/tst_asx.cpp rules)
lumora_test(engine/tst_player.cpp rules)

# The texts of these formats reach nobody through decode(), so their readers are built in.
pkg_check_modules(GSF REQUIRED IMPORTED_TARGET libgsf-1)
pkg_check_modules(ZLIB REQUIRED IMPORTED_TARGET zlib)
set(codecs ${CMAKE_SOURCE_DIR}/src/engine/codecs)
lumora_test(engine/tst_psp.cpp rules)
target_sources(tst_psp PRIVATE ${codecs}/psp.cpp ${codecs}/pspblend.cpp ${codecs}/pspfile.cpp ${codecs}/psppixels.cpp)
target_link_libraries(tst_psp PRIVATE lumora_test_engine PkgConfig::ZLIB)
