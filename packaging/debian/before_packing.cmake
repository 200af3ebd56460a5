# Before the packages are made: compresses man pages and changelogs, and sets the times of all files, so that the same
# sources give the same bytes.

file(GLOB_RECURSE files "${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man*/*"
     "${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog*")
execute_process(COMMAND gzip -9nf -- ${files} COMMAND_ERROR_IS_FATAL ANY)
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND find "${CPACK_TEMPORARY_DIRECTORY}" -exec touch --no-dereference
                          --date=@$ENV{SOURCE_DATE_EPOCH} {} + COMMAND_ERROR_IS_FATAL ANY)
endif()
