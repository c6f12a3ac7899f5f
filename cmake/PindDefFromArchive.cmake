# Writes a module-definition file that exports every TinyXML symbol an archive defines: functions
# as they are, vtables, type information and static members as DATA (so that clients import them
# through their pointer, not a call thunk).
#   cmake -DNM=nm -DARCHIVE=libtinyxml.a -DOUTPUT=out.def -P PindDefFromArchive.cmake
execute_process(COMMAND ${NM} -g --defined-only ${ARCHIVE}
                OUTPUT_VARIABLE listing RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${NM} could not list ${ARCHIVE}")
endif()
string(REPLACE "\n" ";" lines "${listing}")
set(exports "")
foreach(line IN LISTS lines)
    if(line MATCHES "^[0-9a-fA-F]+ ([TDRB]) (_Z[^ ]*TiXml[^ ]*)$")
        if(CMAKE_MATCH_1 STREQUAL "T")
            list(APPEND exports "    ${CMAKE_MATCH_2}")
        else()
            list(APPEND exports "    ${CMAKE_MATCH_2} DATA")
        endif()
    endif()
endforeach()
list(REMOVE_DUPLICATES exports)
if(NOT exports)
    message(FATAL_ERROR "no TinyXML symbols in ${ARCHIVE}")
endif()
list(JOIN exports "\n" body)
file(WRITE ${OUTPUT}.tmp "EXPORTS\n${body}\n")
file(COPY_FILE ${OUTPUT}.tmp ${OUTPUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUTPUT}.tmp)
