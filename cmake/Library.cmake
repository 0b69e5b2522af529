# The two shared libraries: vision_imgproc holds every source below core/ and vision/, vision_camera every
# source below camera/.

set(VELMO_EXPORT_MAP "${PROJECT_SOURCE_DIR}/cmake/exports.map")

# velmo_library(NAME FOLDERS... ): the library lib<NAME>_1_0.so, and its objects in <NAME>_objects, so that
# the tests reach what the library does not export. VELMO_PUBLIC_HEADERS gains its headers: public is every
# one that does not begin with the mark; they are installed and documented.
function(velmo_library name)
    list(TRANSFORM ARGN PREPEND "${PROJECT_SOURCE_DIR}/" OUTPUT_VARIABLE folders)
    list(TRANSFORM folders APPEND "/*.cpp" OUTPUT_VARIABLE sources)
    list(TRANSFORM folders APPEND "/*.h" OUTPUT_VARIABLE headers)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${sources})
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" ${headers})

    add_library(${name}_objects OBJECT ${sources})
    target_include_directories(${name}_objects PUBLIC "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name}_objects PUBLIC opencv_core opencv_imgproc PRIVATE velmo_options)

    string(REPLACE vision_ "" short "${name}")
    add_library(${name} SHARED)
    add_library(vision::${short} ALIAS ${name})
    set_target_properties(${name} PROPERTIES OUTPUT_NAME ${name}_1_0 EXPORT_NAME ${short})
    target_link_libraries(${name} PRIVATE ${name}_objects velmo_options PUBLIC opencv_core opencv_imgproc)
    target_include_directories(${name} PUBLIC
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/vision_imgproc-1.0>")

    # Templates of the standard library are born visible; the map keeps their instances inside.
    target_link_options(${name} PRIVATE "LINKER:--version-script=${VELMO_EXPORT_MAP}" LINKER:--no-undefined-version)
    set_target_properties(${name} PROPERTIES LINK_DEPENDS "${VELMO_EXPORT_MAP}")
    if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
        target_link_options(${name} PRIVATE LINKER:--no-undefined)
    endif()

    foreach(header IN LISTS headers)
        file(STRINGS "${PROJECT_SOURCE_DIR}/${header}" first_line LIMIT_COUNT 1)
        if(NOT first_line STREQUAL "// Not installed.")
            list(APPEND public "${header}")
        endif()
    endforeach()
    set(${name}_HEADERS ${public} PARENT_SCOPE)
    set(VELMO_PUBLIC_HEADERS ${VELMO_PUBLIC_HEADERS} ${public} PARENT_SCOPE)
endfunction()

velmo_library(vision_imgproc core vision)
target_link_libraries(vision_imgproc_objects PRIVATE PkgConfig::TINYXML)
target_link_libraries(vision_imgproc PRIVATE PkgConfig::TINYXML)

# The loops are objects of their own, so that their tests can be built without the rest.
get_target_property(VELMO_OTHER_SOURCES vision_imgproc_objects SOURCES)
set(VELMO_LOOP_SOURCES ${VELMO_OTHER_SOURCES})
list(FILTER VELMO_LOOP_SOURCES INCLUDE REGEX "/vision/kernels/|/core/physics/|/core/Exception\\.cpp$")
list(REMOVE_ITEM VELMO_OTHER_SOURCES ${VELMO_LOOP_SOURCES})
set_target_properties(vision_imgproc_objects PROPERTIES SOURCES "${VELMO_OTHER_SOURCES}")
add_library(vision_imgproc_loops OBJECT ${VELMO_LOOP_SOURCES})
target_include_directories(vision_imgproc_loops PUBLIC "${PROJECT_SOURCE_DIR}")
target_link_libraries(vision_imgproc_loops PUBLIC opencv_core opencv_imgproc PRIVATE velmo_options)
# Vectors go from one inlined function to another: no calling convention is concerned. Their lanes wrap.
target_compile_options(vision_imgproc_loops PRIVATE -Wno-psabi)
set_source_files_properties("${PROJECT_SOURCE_DIR}/vision/kernels/StaticPatternRemoverKernel.cpp" PROPERTIES
    COMPILE_OPTIONS -fwrapv)
target_sources(vision_imgproc_objects INTERFACE "$<TARGET_OBJECTS:vision_imgproc_loops>")
foreach(objects vision_imgproc_loops vision_imgproc_objects)
    target_compile_options(${objects} PRIVATE -Wconversion -Wno-sign-conversion)
endforeach()

# The plain forms are what every fast form is measured against, so they are compiled one way for
# good: another vectoriser or another level would move the ratios without any change to the code.
set(VELMO_PLAIN_SOURCES ${VELMO_LOOP_SOURCES})
list(FILTER VELMO_PLAIN_SOURCES INCLUDE REGEX "Plain\\.cpp$")
set_source_files_properties(${VELMO_PLAIN_SOURCES} PROPERTIES
    COMPILE_OPTIONS "$<$<CONFIG:Release>:-O2;-fno-tree-vectorize>")

# Choosing between two values is no reason for a loop to stay scalar.
set_source_files_properties("${PROJECT_SOURCE_DIR}/core/physics/DewPointKernel.cpp" PROPERTIES
    COMPILE_OPTIONS -fno-trapping-math)

velmo_library(vision_camera camera)
# Not -Wconversion: it takes exception to every matrix expression that becomes a matrix.
target_compile_options(vision_camera_objects PRIVATE -Wfloat-conversion)
target_link_libraries(vision_camera PUBLIC vision_imgproc)
