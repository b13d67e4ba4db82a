# Runs the native and the Windows answers programs over the corpus and fails
# on any difference, naming the cases that differ. Wine runs in a Korean
# locale (code page 949), in a prefix of its own made once before the run.
#   cmake -DNATIVE=... -DWINDOWS=... -DWINE=wine -DCORPUS=... -DPREFIX=... -DOUT=... -P compare_answers.cmake
set(_wine_env WINEPREFIX=${PREFIX} WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml= LC_ALL=ko_KR.UTF-8)
if(NOT EXISTS ${PREFIX}/system.reg)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env ${_wine_env} ${WINE} wineboot -i
    RESULT_VARIABLE _rc OUTPUT_QUIET ERROR_QUIET)
endif()

execute_process(COMMAND ${NATIVE} ${CORPUS} OUTPUT_FILE ${OUT}/answers-native.txt RESULT_VARIABLE _rc)
if(NOT _rc EQUAL 0)
  message(FATAL_ERROR "native answers failed: ${_rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E env ${_wine_env} ${WINE} ${WINDOWS} ${CORPUS}
  OUTPUT_FILE ${OUT}/answers-windows.txt ERROR_VARIABLE _err RESULT_VARIABLE _rc)
if(NOT _rc EQUAL 0)
  message(FATAL_ERROR "Windows answers failed under Wine: ${_rc}\n${_err}")
endif()

# The answers hold semicolons and brackets, so they are compared as files,
# and a difference is shown by diff.
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${OUT}/answers-native.txt ${OUT}/answers-windows.txt
  RESULT_VARIABLE _differ)
if(_differ)
  execute_process(COMMAND diff -u --label Linux --label Windows ${OUT}/answers-native.txt ${OUT}/answers-windows.txt)
  message(FATAL_ERROR "the Linux and Windows answers differ (corpus: ${CORPUS})")
endif()
file(READ ${OUT}/answers-native.txt _text)
string(REGEX MATCHALL "\n" _lines "${_text}")
list(LENGTH _lines _count)
message("${_count} answers agree")
