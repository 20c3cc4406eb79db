# Compares the dynamic symbols that LIBRARY defines with the GOLDEN list, and checks its SONAME.
execute_process(COMMAND "${NM}" -D --defined-only --format=just-symbols "${LIBRARY}"
    OUTPUT_VARIABLE _symbols RESULT_VARIABLE _rc)
if(NOT _rc EQUAL 0)
    message(FATAL_ERROR "${NM} failed on ${LIBRARY}")
endif()
string(REPLACE "\n" ";" _actual "${_symbols}")
list(FILTER _actual EXCLUDE REGEX "^$")
list(SORT _actual)

file(STRINGS "${GOLDEN}" _expected REGEX "^[^#]")
list(SORT _expected)

if(NOT _actual STREQUAL _expected)
    set(_extra ${_actual})
    list(REMOVE_ITEM _extra ${_expected})
    set(_missing ${_expected})
    list(REMOVE_ITEM _missing ${_actual})
    string(REPLACE ";" "\n  " _extra "${_extra}")
    string(REPLACE ";" "\n  " _missing "${_missing}")
    message(FATAL_ERROR "exports differ from ${GOLDEN}\nunexpected:\n  ${_extra}\nmissing:\n  ${_missing}")
endif()

execute_process(COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C readelf -d "${LIBRARY}"
    OUTPUT_VARIABLE _dynamic)
if(NOT _dynamic MATCHES "Library soname: \\[libtesmirwpacliwrapper\\.so\\]")
    message(FATAL_ERROR "SONAME of ${LIBRARY} is not libtesmirwpacliwrapper.so")
endif()
list(LENGTH _actual _count)
message(STATUS "${_count} exported symbols match ${GOLDEN}")
