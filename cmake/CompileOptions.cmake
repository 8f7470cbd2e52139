# Warnings (errors in the presets), hardening and sanitizers, collected in one interface target that every target of ours links.
add_library(tlx_options INTERFACE)

target_compile_options(tlx_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual -Wundef -Wvla
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual>
    # GCC 12 sees overlaps in std::string's operators at -O3 that are not there.
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>
    $<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes -Wmissing-prototypes>
    # File names that the allocator keeps are relative to the project.
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)

if(TLX_SANITIZE)
    # The library calls converter arguments through a pointer to void ** on purpose. Clang's "function" check (not
    # part of gcc's set) would report that.
    target_compile_options(tlx_options INTERFACE
        -fsanitize=${TLX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
        $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
    if(TLX_SANITIZE MATCHES "address")
        # What GCC defines by itself.
        target_compile_definitions(tlx_options INTERFACE $<$<CXX_COMPILER_ID:Clang>:__SANITIZE_ADDRESS__>)
    endif()
    target_link_options(tlx_options INTERFACE -fsanitize=${TLX_SANITIZE}
        $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
else()
    target_compile_options(tlx_options INTERFACE
        $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2> -fstack-protector-strong)
    # Also when linking: it brings in the checks' own library on Windows.
    target_link_options(tlx_options INTERFACE -fstack-protector-strong)
endif()
if(TLX_FUZZ)
    target_compile_options(tlx_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# The libraries throw no exceptions: allocation failures are values.
add_library(tlx_library_options INTERFACE)
target_link_libraries(tlx_library_options INTERFACE tlx_options)
target_compile_options(tlx_library_options INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fvisibility-inlines-hidden> -fvisibility=hidden
    $<$<CONFIG:RelWithDebInfo>:-O3>)  # as in Release
if(NOT WIN32)
    # Calls inside a library go straight to the function: nobody replaces exported functions from outside.
    target_compile_options(tlx_library_options INTERFACE -fno-semantic-interposition -fno-plt)
    target_link_options(tlx_library_options INTERFACE -Wl,-Bsymbolic-functions)
endif()

# For tests and tools, which spend their time in the libraries. A quarter of the time for compiling the command went into
# the rest of its optimisation and into what a debugger needs besides places in the source.
macro(tlx_compile_programs)
    add_compile_options($<$<NOT:$<CONFIG:Debug>>:-O1> $<$<CONFIG:RelWithDebInfo>:-g1>)
    # Once its header is precompiled, GCC 12 sees overruns in std::string's operators that are not there.
    add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-array-bounds>
                        $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-stringop-overflow>
                        $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-stringop-overread>)
endmacro()
# Tests have libraries that are optimised and checked as users get them. A third of the time for compiling tests went into
# their own optimisation, and two fifths into their own checks of undefined behaviour.
macro(tlx_compile_tests)
    tlx_compile_programs()
    add_compile_options(-O0 "$<$<NOT:$<CONFIG:Debug>>:SHELL:-g0 -U_FORTIFY_SOURCE>")
    if(TLX_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize=undefined)
    endif()
endmacro()
