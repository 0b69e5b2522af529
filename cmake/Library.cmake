# The library itself: every source below core/ and vision/.

file(GLOB_RECURSE VELMO_SOURCES CONFIGURE_DEPENDS
    "${PROJECT_SOURCE_DIR}/core/*.cpp" "${PROJECT_SOURCE_DIR}/vision/*.cpp")

# The plain forms are what every fast form is measured against, so they are compiled one way for
# good: another vectoriser or another level would move the ratios without any change to the code.
set(VELMO_PLAIN_SOURCES ${VELMO_SOURCES})
list(FILTER VELMO_PLAIN_SOURCES INCLUDE REGEX "Plain\\.cpp$")
set_source_files_properties(${VELMO_PLAIN_SOURCES} PROPERTIES
    COMPILE_OPTIONS "$<$<CONFIG:Release>:-O2;-fno-tree-vectorize>")

# Objects, so that the tests reach kernels that the shared library does not export.
add_library(vision_imgproc_objects OBJECT ${VELMO_SOURCES})
target_include_directories(vision_imgproc_objects PUBLIC "${PROJECT_SOURCE_DIR}")
target_compile_options(vision_imgproc_objects PRIVATE -Wconversion -Wno-sign-conversion)
target_link_libraries(vision_imgproc_objects
    PUBLIC opencv_core opencv_imgproc
    PRIVATE PkgConfig::TINYXML velmo_options)

add_library(vision_imgproc SHARED)
add_library(vision::imgproc ALIAS vision_imgproc)
set_target_properties(vision_imgproc PROPERTIES
    OUTPUT_NAME vision_imgproc_1_0
    EXPORT_NAME imgproc)
target_link_libraries(vision_imgproc PRIVATE vision_imgproc_objects velmo_options PkgConfig::TINYXML)
target_link_libraries(vision_imgproc PUBLIC opencv_core opencv_imgproc)
target_include_directories(vision_imgproc PUBLIC
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/vision_imgproc-1.0>")

# Templates of the standard library are born visible; the map keeps their instances inside.
set(VELMO_EXPORT_MAP "${PROJECT_SOURCE_DIR}/cmake/exports.map")
target_link_options(vision_imgproc PRIVATE "LINKER:--version-script=${VELMO_EXPORT_MAP}" LINKER:--no-undefined-version)
set_target_properties(vision_imgproc PROPERTIES LINK_DEPENDS "${VELMO_EXPORT_MAP}")
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_link_options(vision_imgproc PRIVATE LINKER:--no-undefined)
endif()

# Public is every header that does not begin with the mark: what is installed, and what is documented.
file(GLOB_RECURSE VELMO_PUBLIC_HEADERS CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}"
    "${PROJECT_SOURCE_DIR}/core/*.h" "${PROJECT_SOURCE_DIR}/vision/*.h")
foreach(header IN LISTS VELMO_PUBLIC_HEADERS)
    file(STRINGS "${PROJECT_SOURCE_DIR}/${header}" first_line LIMIT_COUNT 1)
    if(first_line STREQUAL "// Not installed.")
        list(REMOVE_ITEM VELMO_PUBLIC_HEADERS "${header}")
    endif()
endforeach()
