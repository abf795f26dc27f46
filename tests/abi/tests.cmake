# The exported symbols of the shared library against the checked-in manifest.
if(NOT WIN32 AND NOT APPLE)
  add_test(NAME abi_manifest
    COMMAND ${CMAKE_COMMAND} -DLIB=$<TARGET_FILE:norvik>
            -DMANIFEST_DIR=${PROJECT_SOURCE_DIR}/abi/manifest
            -P ${CMAKE_CURRENT_LIST_DIR}/check_manifest.cmake)
endif()
