# Installs both libraries as one CMake package and as a pkg-config module each.

include(CMakePackageConfigHelpers)

# Libraries of one folder find each other, wherever that is.
set_target_properties(vision_camera PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS vision_imgproc vision_camera EXPORT vision_imgproc_targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/vision_imgproc-1.0")
install(EXPORT vision_imgproc_targets
    NAMESPACE vision::
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/vision_imgproc")

configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/cmake/vision_imgprocConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/vision_imgprocConfig.cmake"
    INSTALL_DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/vision_imgproc")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/vision_imgprocConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
# Relative to the module itself, so that an installed tree may be moved.
file(RELATIVE_PATH VELMO_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
foreach(library IN ITEMS vision_imgproc vision_camera)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${library}-1.0.pc.in"
        "${PROJECT_BINARY_DIR}/${library}-1.0.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${library}-1.0.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()

install(FILES
    "${PROJECT_BINARY_DIR}/vision_imgprocConfig.cmake"
    "${PROJECT_BINARY_DIR}/vision_imgprocConfigVersion.cmake"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/vision_imgproc")
foreach(header IN LISTS VELMO_PUBLIC_HEADERS)
    get_filename_component(folder "${header}" DIRECTORY)
    install(FILES "${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/vision_imgproc-1.0/${folder}")
endforeach()
