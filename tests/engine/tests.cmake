# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)

add_library(lumora_test_engine STATIC
    engine/enginefiles.cpp engine/ownfiles.cpp engine/rasterfiles.cpp engine/testpictures.cpp)
target_link_libraries(lumora_test_engine PUBLIC lumora_test_support PRIVATE lumora_options)

lumora_test(engine/tst_adjustments.cpp rules)
lumora_test(engine/tst_asx.cpp rules)
lumora_test(engine/tst_decode.cpp rules)
lumora_test(engine/tst_depth.cpp rules)
lumora_test(engine/tst_encode.cpp rules)
lumora_test(engine/tst_fpx.cpp rules)
lumora_test(engine/tst_hostile.cpp rules)
lumora_test(engine/tst_hostilemetafiles.cpp rules)
lumora_test(engine/tst_iff.cpp rules)
lumora_test(engine/tst_mbm.cpp rules)
lumora_test(engine/tst_portable.cpp rules)
lumora_test(engine/tst_psd.cpp rules)
lumora_test(engine/tst_tga.cpp rules)
lumora_test(engine/tst_metadata.cpp rules)
lumora_test(engine/tst_metafiles.cpp rules)
lumora_test(engine/tst_hostilemedia.cpp rules)
lumora_test(engine/tst_isolation.cpp rules)
lumora_test(engine/tst_missingmodule.cpp rules)
lumora_test(engine/tst_modernformats.cpp rules)
lumora_test(engine/tst_pic.cpp rules)
lumora_test(engine/tst_picturecache.cpp rules)
lumora_test(engine/tst_player.cpp rules)
lumora_test(engine/tst_psp.cpp rules)
lumora_test(engine/tst_samples.cpp rules)
lumora_test(engine/tst_smallformats.cpp rules)
lumora_test(engine/tst_vectordrawings.cpp rules)
foreach(name tst_decode tst_encode tst_fpx tst_hostile tst_iff tst_mbm tst_metadata tst_missingmodule tst_modernformats tst_pic tst_picturecache tst_portable tst_psd tst_psp tst_smallformats tst_tga)
    target_link_libraries(${name} PRIVATE lumora_test_engine)
endforeach()
foreach(name tst_hostilemetafiles tst_metafiles)
    target_sources(${name} PRIVATE engine/metafilewriter.cpp)
endforeach()
target_compile_definitions(tst_hostile PRIVATE LUMORA_FOUND="${CMAKE_SOURCE_DIR}/fuzz/found")

# The encoders of the formats' own libraries make the files.
pkg_check_modules(MODERN_ENCODERS REQUIRED IMPORTED_TARGET libwebp libwebpmux libheif libjxl zlib)
target_sources(tst_modernformats PRIVATE engine/modernfiles.cpp)
target_link_libraries(tst_modernformats PRIVATE PkgConfig::MODERN_ENCODERS)

# Writes the containers that are read.
pkg_check_modules(GSF REQUIRED IMPORTED_TARGET libgsf-1)
target_link_libraries(tst_fpx PRIVATE PkgConfig::GSF)

# The decoder program loads this in place of the real codecs.
add_library(lumora_test_obedient MODULE engine/obedient/obedientcodec.cpp)
target_link_libraries(lumora_test_obedient PRIVATE Qt6::Gui lumora_options)
set_target_properties(lumora_test_obedient PROPERTIES PREFIX "" OUTPUT_NAME lumora-codecs
    LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin/tests/obedient")
add_dependencies(tst_isolation lumora_test_obedient)
target_link_libraries(tst_modernformats PRIVATE lumora_test_engine PkgConfig::MODERN_ENCODERS)
lumora_test(engine/tst_pixels.cpp rules)
lumora_test(engine/tst_gifframes.cpp rules)

# The format's own library writes the files.
pkg_check_modules(TIFF REQUIRED IMPORTED_TARGET libtiff-4)
lumora_test(engine/tst_tiff.cpp rules)
target_link_libraries(tst_tiff PRIVATE PkgConfig::TIFF)
add_dependencies(tst_tiff lumora-codecs)
