if(WIN32)
    enable_language(RC)
    find_program(TLX_LLVM_DLLTOOL llvm-dlltool REQUIRED)
endif()

# tlx_make_dll(<name> <.def file>): what a DLL has beside its code. It is tlxpki.dll, as its callers load it, and its import
# libraries are libtlxpki.dll.a for MinGW and tlxpki.lib, in the form of Visual Studio's own.
function(tlx_make_dll name exports)
    set(description ${PROJECT_DESCRIPTION})
    configure_file(${PROJECT_SOURCE_DIR}/src/windows/version.rc.in ${name}.rc @ONLY)
    target_sources(${name} PRIVATE ${exports} ${PROJECT_SOURCE_DIR}/src/windows/stack_check.cpp
                                   ${CMAKE_CURRENT_BINARY_DIR}/${name}.rc)
    set_target_properties(${name} PROPERTIES PREFIX "")
    set(import_library ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${name}.lib)
    add_custom_command(TARGET ${name} POST_BUILD BYPRODUCTS ${import_library} VERBATIM
                       COMMAND ${TLX_LLVM_DLLTOOL} -m i386:x86-64 -d ${exports} -l ${import_library})
    install(FILES ${exports} ${import_library} DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

# tlx_add_library(<name> HEADERS <public headers...> SOURCES <files...> MACRO <export macro> LINK <libraries...>)
#
# A shared library whose exported symbols are exactly the functions that its public headers mark with the export
# macro: CMake writes the linker's version script, or the .def file of a DLL, from the headers at configure time.
function(tlx_add_library name)
    cmake_parse_arguments(ARG "" "MACRO" "HEADERS;SOURCES;LINK" ${ARGN})

    set(symbols "")
    foreach(header IN LISTS ARG_HEADERS)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
        file(READ ${header} text)
        string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
        string(REGEX REPLACE "(^|\n)#([^\n]*\\\\\n)*[^\n]*" "" text "${text}")
        string(REGEX MATCHALL "${ARG_MACRO}[^;()]*[ *]([A-Za-z_][A-Za-z0-9_]*)\\(" declarations "${text}")
        foreach(declaration IN LISTS declarations)
            string(REGEX REPLACE ".*[ *\n]([A-Za-z_][A-Za-z0-9_]*)\\($" "\\1" symbol "${declaration}")
            list(APPEND symbols ${symbol})
        endforeach()
    endforeach()
    list(SORT symbols)
    list(REMOVE_DUPLICATES symbols)

    if(WIN32)
        list(JOIN symbols "\n    " script)
        set(exports ${CMAKE_CURRENT_BINARY_DIR}/${name}.def)
        file(CONFIGURE OUTPUT ${exports} CONTENT "LIBRARY @name@.dll\nEXPORTS\n    @script@\n" @ONLY)
    else()
        list(JOIN symbols ";\n    " script)
        set(exports ${CMAKE_CURRENT_BINARY_DIR}/${name}.map)
        file(CONFIGURE OUTPUT ${exports} CONTENT "{\n  global:\n    @script@;\n  local:\n    *;\n};\n" @ONLY)
    endif()

    add_library(${name} SHARED ${ARG_SOURCES})
    add_library(tlxpki::${name} ALIAS ${name})
    target_include_directories(${name}
        PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
        PRIVATE ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:tlx_library_options> ${ARG_LINK})
    target_compile_definitions(${name} PRIVATE ${ARG_MACRO}_BUILD)
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${exports})
    if(WIN32)
        tlx_make_dll(${name} ${exports})
    else()
        target_link_options(${name} PRIVATE -Wl,--version-script=${exports} -Wl,-z,relro,-z,now)
        if(NOT TLX_SANITIZE)
            target_link_options(${name} PRIVATE -Wl,-z,defs)
        endif()
    endif()
endfunction()
