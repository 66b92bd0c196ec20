# Compiler settings that every target of the project shares, and the one way to add a room's library.

add_library(kiv_options INTERFACE)
target_include_directories(kiv_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(kiv_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -fno-plt
    $<$<BOOL:${KIV_WERROR}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # At -O3 g++ 12 takes "text" + std::string for a copy over itself, of half the address space.
    target_compile_options(kiv_options INTERFACE $<$<AND:$<CONFIG:Release>,$<COMPILE_LANGUAGE:CXX>>:-Wno-restrict>)
endif()

if(KIV_SANITIZE STREQUAL "address")
    # `undefined` alone leaves out the two float checks.
    set(sanitizer -fsanitize=address,undefined,float-cast-overflow,float-divide-by-zero
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_definitions(kiv_options INTERFACE _GLIBCXX_ASSERTIONS)
elseif(KIV_SANITIZE STREQUAL "thread")
    set(sanitizer -fsanitize=thread -fno-omit-frame-pointer)
endif()
if(sanitizer)
    # What the sanitizers weave in makes g++ 12 warn of uninitialised values inside its own library (std::regex).
    list(APPEND sanitizer $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_compile_options(kiv_options INTERFACE ${sanitizer})
    target_link_options(kiv_options INTERFACE ${sanitizer})
endif()

# kiv_library(NAME [dependencies...]): all .cpp files of the current folder as the static library NAME.
function(kiv_library name)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    if(sources)
        add_library(${name} STATIC ${sources})
        target_link_libraries(${name} PUBLIC kiv_options ${ARGN})
    else()
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE kiv_options ${ARGN})
    endif()
endfunction()
