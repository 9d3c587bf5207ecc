# What `cmake --install` and cpack put where: headers, library, CMake and pkg-config files, the command.
include(CMakePackageConfigHelpers)

# A header that says "Private to the library" in a comment is for our sources only.
file(GLOB headers RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS
    Varnex/*.h Varnex/*/*.h Zendro/*.h Plexa/*.h)
foreach(header IN LISTS headers)
    file(STRINGS "${PROJECT_SOURCE_DIR}/${header}" private REGEX "//.*Private to the library" LIMIT_COUNT 1)
    if(NOT private)
        get_filename_component(folder "${header}" DIRECTORY)
        install(FILES "${PROJECT_SOURCE_DIR}/${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}")
    endif()
endforeach()

set(config_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Varnex")
install(TARGETS Varnex EXPORT VarnexTargets)
install(EXPORT VarnexTargets NAMESPACE Varnex:: DESTINATION "${config_folder}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/VarnexConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/VarnexConfig.cmake" INSTALL_DESTINATION "${config_folder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/VarnexConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/VarnexConfig.cmake" "${PROJECT_BINARY_DIR}/VarnexConfigVersion.cmake"
    DESTINATION "${config_folder}")

# The prefix is found from where the file lies, so that a moved installation stays usable.
set(pc_folder "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH VARNEX_PC_PREFIX "${pc_folder}" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" VARNEX_PC_PREFIX "${VARNEX_PC_PREFIX}")
list(JOIN VARNEX_PC_REQUIRES " " VARNEX_PC_REQUIRES_TEXT)
list(JOIN VARNEX_PC_LIBS " " VARNEX_PC_LIBS_TEXT)
configure_file("${PROJECT_SOURCE_DIR}/cmake/varnex.pc.in" "${PROJECT_BINARY_DIR}/varnex.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/varnex.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

if(TARGET varnex_command)
    file(RELATIVE_PATH to_library "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    set_target_properties(varnex_command PROPERTIES INSTALL_RPATH "$ORIGIN/${to_library}")
    install(TARGETS varnex_command)
endif()

if(PROJECT_IS_TOP_LEVEL)
    include(VarnexPackage)
endif()
