# Build helpers shared by the library, the tool, the tests and the benchmarks.

# A cross build for Windows puts every program and PindBase.dll in one folder, beside the mingw
# runtime DLLs they load, so that Wine (or a Windows machine) runs them with no search path set.
if(WIN32 AND CMAKE_CROSSCOMPILING)
    if(NOT CMAKE_RUNTIME_OUTPUT_DIRECTORY)
        set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
    endif()
    foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll zlib1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
                        OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(NOT IS_ABSOLUTE "${path}" OR NOT EXISTS "${path}")
            message(FATAL_ERROR "${dll} not found beside ${CMAKE_CXX_COMPILER}")
        endif()
        file(COPY ${path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
        list(APPEND PIND_MINGW_RUNTIME_DLLS ${path})
    endforeach()
endif()

# Warnings as errors on our own targets only; third-party headers come in as system includes.
function(pind_set_warnings target)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /WX)
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Werror)
    endif()
endfunction()

# PIND_SANITIZE applies to every target of the build so that the library, its tests and the tool
# agree on the runtime.
function(pind_enable_sanitizers sanitizers)
    if(NOT sanitizers)
        return()
    endif()
    string(REPLACE ";" "," list "${sanitizers}")
    add_compile_options(-fsanitize=${list} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${list})
endfunction()

# One GoogleTest executable per area: tests/<area>/*.cpp plus the shared fakes. Tests of what only
# Windows has (real USER32 windows, say) sit in tests/<area>/windows/ and join the Windows build.
function(pind_add_test area)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${area}/*.cpp)
    if(WIN32)
        file(GLOB windows_sources CONFIGURE_DEPENDS
             ${CMAKE_CURRENT_SOURCE_DIR}/${area}/windows/*.cpp)
        list(APPEND sources ${windows_sources})
    endif()
    if(NOT sources)
        return()
    endif()
    set(target pind_${area}_tests)
    add_executable(${target} ${sources})
    target_link_libraries(${target} PRIVATE pind_test_support PindBase::PindBase GTest::gtest GTest::gtest_main)
    target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
    pind_set_warnings(${target})
    # Tests run in their own build folder; the sample data is found through this definition.
    target_compile_definitions(${target} PRIVATE PIND_EXAMPLES_DIR="${PROJECT_SOURCE_DIR}/examples/data")
    if(CMAKE_CROSSCOMPILING)
        gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120
                             WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
    else()
        gtest_discover_tests(${target} WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
    endif()
endfunction()
