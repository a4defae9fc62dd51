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

# The encoders of the formats' own libraries make the files.
pkg_check_modules(MODERN_ENCODERS REQUIRED IMPORTED_TARGET libwebp libwebpmux libheif libjxl zlib)
lumora_test(engine/tst_modernformats.cpp rules)
target_sources(tst_modernformats PRIVATE engine/modernfiles.cpp)
target_link_libraries(tst_modernformats PRIVATE lumora_test_engine PkgConfig::MODERN_ENCODERS)
lumora_test(engine/tst_pixels.cpp rules)
lumora_test(engine/tst_gifframes.cpp rules)
