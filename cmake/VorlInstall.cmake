# What `cmake --install` copies, as components:
#   runtime        libvorl.so.1, which programs need to run
#   development    headers, libvorl.so or libvorl.a, the checks for platforms, the CMake package and vorl.pc
#   tool           the command-line tool
#   documentation  the texts and the examples
if(NOT VORL_INSTALL)
    return()
endif()

include(CMakePackageConfigHelpers)

install(TARGETS vorl EXPORT vorl
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development
    FILE_SET platform_headers DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)

set(vorl_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/vorl")
set(vorl_generated_dir "${PROJECT_BINARY_DIR}/install")
install(EXPORT vorl NAMESPACE vorl:: FILE vorl-targets.cmake
    DESTINATION "${vorl_package_dir}" COMPONENT development)
# Archives go to people with other compilers: they hold machine code, not what this one's link-time optimiser reads.
set(vorl_archived vorl_testkit)
if(NOT BUILD_SHARED_LIBS)
    list(APPEND vorl_archived vorl vorl_software_platform)
endif()
foreach(target IN LISTS vorl_archived)
    if(TARGET ${target})
        set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
    endif()
endforeach()

if(TARGET vorl_testkit)
    # Apart from the library's, because it speaks of GoogleTest: find_package(vorl COMPONENTS testkit).
    install(TARGETS vorl_testkit vorl_testkit_gtest EXPORT vorl-testkit
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
    install(EXPORT vorl-testkit NAMESPACE vorl:: FILE vorl-testkit-targets.cmake
        DESTINATION "${vorl_package_dir}" COMPONENT development)
endif()

# Who links the library calls OpenSSL through its headers as well, and gets on only with the major version it was built for.
string(REGEX MATCH "^[0-9]+" vorl_openssl_major "${OPENSSL_VERSION}")
math(EXPR vorl_openssl_next_major "${vorl_openssl_major} + 1")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/vorl-config.cmake.in"
    "${vorl_generated_dir}/vorl-config.cmake"
    INSTALL_DESTINATION "${vorl_package_dir}"
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${vorl_generated_dir}/vorl-config-version.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${vorl_generated_dir}/vorl-config.cmake" "${vorl_generated_dir}/vorl-config-version.cmake"
    DESTINATION "${vorl_package_dir}" COMPONENT development)

# vorl_path_between(FROM TO RESULT): the way from one installed folder to another, which stays the same when both move.
function(vorl_path_between from to result)
    cmake_path(ABSOLUTE_PATH from BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" NORMALIZE)
    cmake_path(ABSOLUTE_PATH to BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" NORMALIZE)
    cmake_path(RELATIVE_PATH to BASE_DIRECTORY "${from}")
    set(${result} "${to}" PARENT_SCOPE)
endfunction()

# vorl_path_from_prefix(DIR RESULT): an installed folder as vorl.pc names it.
function(vorl_path_from_prefix dir result)
    if(NOT IS_ABSOLUTE "${dir}")
        set(dir "\${prefix}/${dir}")
    endif()
    set(${result} "${dir}" PARENT_SCOPE)
endfunction()

set(vorl_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
vorl_path_between("${vorl_pkgconfig_dir}" "${CMAKE_INSTALL_PREFIX}" vorl_prefix_from_pkgconfig)
vorl_path_from_prefix("${CMAKE_INSTALL_LIBDIR}" vorl_pc_libdir)
vorl_path_from_prefix("${CMAKE_INSTALL_INCLUDEDIR}" vorl_pc_includedir)
configure_file("${PROJECT_SOURCE_DIR}/cmake/vorl.pc.in" "${vorl_generated_dir}/vorl.pc" @ONLY)
install(FILES "${vorl_generated_dir}/vorl.pc" DESTINATION "${vorl_pkgconfig_dir}" COMPONENT development)

if(TARGET vorl_tool)
    # The tool looks for the library beside itself, so that it runs from any prefix, also one that is moved or that the
    # loader's cache does not know yet. Under /usr the loader finds the library, and nothing else should decide.
    if(BUILD_SHARED_LIBS AND NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        vorl_path_between("${CMAKE_INSTALL_BINDIR}" "${CMAKE_INSTALL_LIBDIR}" vorl_lib_from_bin)
        set_target_properties(vorl_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${vorl_lib_from_bin}")
    endif()
    install(TARGETS vorl_tool RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tool)
endif()

install(FILES
    "${PROJECT_SOURCE_DIR}/README.md"
    "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
    "${PROJECT_SOURCE_DIR}/SECURITY.md"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation FILES_MATCHING PATTERN "*.md" PATTERN man EXCLUDE)
# Not what builds and tests the examples in this tree.
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation
    REGEX "/examples/(http/)?CMakeLists\\.txt$" EXCLUDE
    REGEX "/examples/(.*/)?[^/]*_test\\.cpp$" EXCLUDE
    REGEX "/examples/(checks|unsafe_groups)\\.h$" EXCLUDE
    REGEX "/examples/http/[^/]*\\.bash$" EXCLUDE
    REGEX "/examples/platform-softtoken/make-token$" EXCLUDE)
# It is run where it is, and the rest gets the permissions of texts.
install(PROGRAMS "${PROJECT_SOURCE_DIR}/examples/platform-softtoken/make-token"
    DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples/platform-softtoken" COMPONENT documentation)
