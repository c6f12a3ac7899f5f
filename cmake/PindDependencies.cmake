# Finds the third-party libraries and links them. Native builds use Debian's packages (see
# scripts/setup.sh); a cross build for Windows uses the mingw sysroot's zlib and the minizip,
# TinyXML and GoogleTest that scripts/windows-test.sh builds into PIND_DEPS_PREFIX, with {fmt}
# header-only from the build machine's headers.
find_package(Threads REQUIRED)

if(CMAKE_CROSSCOMPILING)
    set(PIND_DEPS_PREFIX "" CACHE PATH
        "Prefix holding the cross-built minizip, TinyXML and GoogleTest")
    if(PIND_DEPS_PREFIX)
        # A path under a find root is searched as it is, so the prefix needs no re-rooting.
        list(APPEND CMAKE_FIND_ROOT_PATH ${PIND_DEPS_PREFIX})
        list(APPEND CMAKE_PREFIX_PATH ${PIND_DEPS_PREFIX})
    endif()
    find_package(ZLIB REQUIRED)

    # Imports a static library found in the find roots as `target`.
    function(pind_import_static target library header suffix)
        find_path(PIND_${library}_INCLUDE_DIR ${header} PATH_SUFFIXES ${suffix})
        find_library(PIND_${library}_LIBRARY ${library})
        if(NOT PIND_${library}_INCLUDE_DIR OR NOT PIND_${library}_LIBRARY)
            message(FATAL_ERROR "${library} for the target not found: set PIND_DEPS_PREFIX "
                                "(scripts/windows-test.sh builds it)")
        endif()
        add_library(${target} STATIC IMPORTED GLOBAL)
        set_target_properties(${target} PROPERTIES
            IMPORTED_LOCATION ${PIND_${library}_LIBRARY}
            INTERFACE_INCLUDE_DIRECTORIES ${PIND_${library}_INCLUDE_DIR})
    endfunction()
    pind_import_static(pind::minizip minizip unzip.h minizip)
    set_property(TARGET pind::minizip PROPERTY INTERFACE_LINK_LIBRARIES ZLIB::ZLIB)
    # Debian's TinyXML header turns on its std::string interface itself (TIXML_USE_STL).
    pind_import_static(pind::tinyxml tinyxml tinyxml.h "")

    # {fmt} is header-only here. Its headers are reached through a folder that holds nothing but a
    # link to them, so that the rest of the build machine's /usr/include stays out of the build.
    find_path(PIND_FMT_HEADERS fmt/format.h
              PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    if(NOT PIND_FMT_HEADERS)
        message(FATAL_ERROR "{fmt} headers not found in /usr/include (install libfmt-dev)")
    endif()
    set(PIND_FMT_LINK_DIR ${CMAKE_BINARY_DIR}/fmt-include)
    file(MAKE_DIRECTORY ${PIND_FMT_LINK_DIR})
    file(CREATE_LINK ${PIND_FMT_HEADERS}/fmt ${PIND_FMT_LINK_DIR}/fmt SYMBOLIC)
    add_library(fmt::fmt INTERFACE IMPORTED GLOBAL)
    set_target_properties(fmt::fmt PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES ${PIND_FMT_LINK_DIR}
        INTERFACE_COMPILE_DEFINITIONS FMT_HEADER_ONLY)
else()
    find_package(PkgConfig REQUIRED)
    find_package(fmt REQUIRED)
    find_package(ZLIB REQUIRED)
    pkg_check_modules(MINIZIP REQUIRED IMPORTED_TARGET GLOBAL minizip)
    pkg_check_modules(TINYXML REQUIRED IMPORTED_TARGET GLOBAL tinyxml)
    add_library(pind::minizip INTERFACE IMPORTED GLOBAL)
    set_property(TARGET pind::minizip PROPERTY INTERFACE_LINK_LIBRARIES PkgConfig::MINIZIP)
    add_library(pind::tinyxml INTERFACE IMPORTED GLOBAL)
    set_property(TARGET pind::tinyxml PROPERTY INTERFACE_LINK_LIBRARIES PkgConfig::TINYXML)
endif()

# A Windows DLL carries TinyXML inside; every other build hands it on to the clients' link.
if(WIN32 AND PIND_BUILD_SHARED)
    set(PIND_CARRIES_TINYXML ON)
    set(PIND_PC_REQUIRES "")
else()
    set(PIND_CARRIES_TINYXML OFF)
    set(PIND_PC_REQUIRES "tinyxml")
endif()

function(pind_link_dependencies target)
    # {fmt} stays private: no public header includes it.
    target_link_libraries(${target}
        PUBLIC Threads::Threads
        PRIVATE fmt::fmt ZLIB::ZLIB pind::minizip)
    get_target_property(type ${target} TYPE)
    if(WIN32 AND type STREQUAL "SHARED_LIBRARY")
        pind_export_tinyxml(${target})
    else()
        # TinyXML's DOM is part of the library's interface (pind/xml/TinyXml.h): clients link it.
        target_link_libraries(${target} PUBLIC pind::tinyxml)
    endif()
    if(WIN32)
        target_link_libraries(${target} PRIVATE winmm user32)
    endif()
endfunction()

# The DLL carries the whole static TinyXML and exports its classes through a module-definition
# file listed from the archive, since TinyXML's header marks nothing for export. Clients then get
# the DOM from PindBase.dll alone; the header is installed beside the library's own.
function(pind_export_tinyxml target)
    set(def ${CMAKE_CURRENT_BINARY_DIR}/PindBaseTinyXml.def)
    add_custom_command(OUTPUT ${def}
        COMMAND ${CMAKE_COMMAND} -DNM=${CMAKE_NM} -DARCHIVE=${PIND_tinyxml_LIBRARY} -DOUTPUT=${def}
                -P ${PROJECT_SOURCE_DIR}/cmake/PindDefFromArchive.cmake
        DEPENDS ${PIND_tinyxml_LIBRARY} ${PROJECT_SOURCE_DIR}/cmake/PindDefFromArchive.cmake
        COMMENT "Listing TinyXML's symbols for export")
    target_sources(${target} PRIVATE ${def})
    target_link_libraries(${target} PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,pind::tinyxml>")
    target_include_directories(${target} SYSTEM PUBLIC
                               $<BUILD_INTERFACE:${PIND_tinyxml_INCLUDE_DIR}>)
    install(FILES ${PIND_tinyxml_INCLUDE_DIR}/tinyxml.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endfunction()
