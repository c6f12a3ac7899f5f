# Finds the third-party libraries (Debian packages; see scripts/setup.sh) and links them.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(fmt REQUIRED)
find_package(ZLIB REQUIRED)
pkg_check_modules(MINIZIP REQUIRED IMPORTED_TARGET minizip)
pkg_check_modules(TINYXML REQUIRED IMPORTED_TARGET tinyxml)

function(pind_link_dependencies target)
    # {fmt} stays private: no public header includes it.
    target_link_libraries(${target}
        PUBLIC Threads::Threads
        PRIVATE fmt::fmt ZLIB::ZLIB PkgConfig::MINIZIP PkgConfig::TINYXML)
    if(WIN32)
        target_link_libraries(${target} PRIVATE winmm user32)
    endif()
endfunction()
