# cmake -D SOURCE_DIR=... -D COMMIT=... -D HEADER=... -P WriteCommit.cmake
# Writes a header with the commit of the sources: COMMIT if it is given, else what git says of
# SOURCE_DIR, else nothing. Leaves a header alone that says so already, since it is run by each build.

set(commit "${COMMIT}")
find_program(GIT git)
if(commit STREQUAL "" AND GIT AND EXISTS ${SOURCE_DIR}/.git)
    execute_process(COMMAND ${GIT} rev-parse --short HEAD WORKING_DIRECTORY ${SOURCE_DIR}
                    OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE
                    ERROR_QUIET RESULT_VARIABLE failed)
    if(failed)
        set(commit "") # no git of ours, or one that does not trust the folder
    else()
        execute_process(COMMAND ${GIT} status --porcelain --untracked-files=no
                        WORKING_DIRECTORY ${SOURCE_DIR} OUTPUT_VARIABLE changes ERROR_QUIET)
        if(changes)
            string(APPEND commit ", changed")
        endif()
    endif()
endif()
file(CONFIGURE OUTPUT ${HEADER} CONTENT "#define SIGNALSCOPE_COMMIT \"${commit}\"\n")
