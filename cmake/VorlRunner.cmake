# How scripts run what was built for another architecture.

# vorl_runner(TARGET RESULT): what runs a program: itself, or a script that runs it in the emulator. The program
# takes the script for its own name, so that a test that starts its program again can.
function(vorl_runner target result)
    set(runner "$<TARGET_FILE:${target}>")
    if(CMAKE_CROSSCOMPILING_EMULATOR)
        list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
        set(runner "${CMAKE_BINARY_DIR}/emulated/$<TARGET_FILE_NAME:${target}>")
        # No two folders may write the same file, not even with the same text.
        get_property(written GLOBAL PROPERTY VORL_RUNNERS)
        if(NOT target IN_LIST written)
            set_property(GLOBAL APPEND PROPERTY VORL_RUNNERS ${target})
            file(GENERATE OUTPUT "${runner}"
                CONTENT "#!/bin/sh\nQEMU_ARGV0=$0 exec ${emulator} \"$<TARGET_FILE:${target}>\" \"$@\"\n"
                FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
        endif()
    endif()
    set(${result} "${runner}" PARENT_SCOPE)
endfunction()
