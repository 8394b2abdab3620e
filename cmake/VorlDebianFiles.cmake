# Run by CPack between installing into its own folders and packing them: adds what each Debian package has to hold beside
# its own files, and compresses what is to be compressed.

# A date that the sources decide, so that the same sources give the same packages.
string(TIMESTAMP VORL_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)

function(vorl_compress file)
    execute_process(COMMAND gzip -9nf "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(part IN ITEMS runtime developer tool)
    string(TOUPPER "${part}" upper)
    set(package "${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
    set(files "${CPACK_TEMPORARY_DIRECTORY}/${part}/usr")
    if(NOT IS_DIRECTORY "${files}")
        message(FATAL_ERROR "${files} is not there: nothing was installed for the package ${package}")
    endif()

    set(doc "${files}/share/doc/${package}")
    file(COPY "${CMAKE_CURRENT_LIST_DIR}/debian/copyright" DESTINATION "${doc}"
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    file(COPY_FILE "${CMAKE_CURRENT_LIST_DIR}/../CHANGELOG.md" "${doc}/changelog")
    configure_file("${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in" "${doc}/changelog.Debian" @ONLY)
    vorl_compress("${doc}/changelog")
    vorl_compress("${doc}/changelog.Debian")
    # It is changelog.gz already.
    file(REMOVE "${doc}/CHANGELOG.md")

    file(GLOB pages "${files}/share/man/*/*.[1-9]" "${files}/share/man/*/*/*.[1-9]")
    foreach(page IN LISTS pages)
        vorl_compress("${page}")
    endforeach()
endforeach()
