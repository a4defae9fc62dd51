# Tests of this folder: lumora_test(<folder>/tst_name.cpp rules|windows)

add_library(lumora_test_engine STATIC engine/enginefiles.cpp)
target_link_libraries(lumora_test_engine PUBLIC lumora_test_support PRIVATE lumora_options)

lumora_test(engine/tst_decode.cpp rules)
lumora_test(engine/tst_hostile.cpp rules)
lumora_test(engine/tst_isolation.cpp rules)
lumora_test(engine/tst_missingmodule.cpp rules)
lumora_test(engine/tst_picturecache.cpp rules)
lumora_test(engine/tst_samples.cpp rules)
foreach(name tst_decode tst_hostile tst_missingmodule tst_picturecache)
    target_link_libraries(${name} PRIVATE lumora_test_engine)
endforeach()
lumora_test(engine/tst_asx.cpp rules)
lumora_test(engine/tst_player.cpp rules)

# The decoder program loads this in place of the real codecs.
add_library(lumora_test_obedient MODULE engine/obedient/obedientcodec.cpp)
target_link_libraries(lumora_test_obedient PRIVATE Qt6::Gui lumora_options)
set_target_properties(lumora_test_obedient PROPERTIES PREFIX "" OUTPUT_NAME lumora-codecs
    LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin/tests/obedient")
add_dependencies(tst_isolation lumora_test_obedient)
