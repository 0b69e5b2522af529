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
    velmo_precompile(${name}_objects)

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

# The loops are objects of their own, so that their tests can be built without the rest: <NAME>_loops.
function(velmo_loops name regex)
    get_target_property(others ${name}_objects SOURCES)
    set(loops ${others})
    list(FILTER loops INCLUDE REGEX "${regex}")
    list(REMOVE_ITEM others ${loops})
    set_target_properties(${name}_objects PROPERTIES SOURCES "${others}")
    add_library(${name}_loops OBJECT ${loops})
    target_include_directories(${name}_loops PUBLIC "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${name}_loops PUBLIC opencv_core opencv_imgproc PRIVATE velmo_options)
    # Vectors go from one inlined function to another: no calling convention is concerned.
    target_compile_options(${name}_loops PRIVATE -Wconversion -Wno-sign-conversion -Wno-psabi)
    target_sources(${name}_objects INTERFACE "$<TARGET_OBJECTS:${name}_loops>")

    # The plain forms are what every fast form is measured against, so they are compiled one way for
    # good: another vectoriser or another level would move the ratios without any change to the code.
    list(FILTER loops INCLUDE REGEX "Plain\\.cpp$")
    set_source_files_properties(${loops} PROPERTIES
        COMPILE_OPTIONS "$<$<CONFIG:Release>:-O2;-fno-tree-vectorize>")
endfunction()

velmo_loops(vision_imgproc "/vision/kernels/|/core/physics/|/core/Exception\\.cpp$")
target_compile_options(vision_imgproc_objects PRIVATE -Wconversion -Wno-sign-conversion)

velmo_library(vision_camera camera)
# Not -Wconversion: it takes exception to every matrix expression that becomes a matrix.
target_compile_options(vision_camera_objects PRIVATE -Wfloat-conversion)
velmo_loops(vision_camera "/camera/.*(Kernel|Plain)\\.cpp$")
target_link_libraries(vision_camera PUBLIC vision_imgproc)

# Lanes wrap.
set_source_files_properties("${PROJECT_SOURCE_DIR}/vision/kernels/StaticPatternRemoverKernel.cpp" PROPERTIES
    COMPILE_OPTIONS -fwrapv)

# Choosing between two values is no reason for a loop to stay scalar.
set_source_files_properties("${PROJECT_SOURCE_DIR}/core/physics/DewPointKernel.cpp"
    "${PROJECT_SOURCE_DIR}/camera/stages/DenoiseKernel.cpp" PROPERTIES COMPILE_OPTIONS -fno-trapping-math)
