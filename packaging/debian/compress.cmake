# Run by cpack on what it is about to pack: Debian's man pages are compressed, without a time stamp.
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_DIRECTORY}/signalscope*.1)
foreach(page IN LISTS pages)
    execute_process(COMMAND gzip -9 --no-name ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
