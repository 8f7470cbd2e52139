# What a build for Windows takes from elsewhere, since no packages of libraries are for that target: libcrypto from a
# cross-built prefix (scripts/build-windows-libcrypto), GoogleTest from its installed sources, Google Benchmark from
# fetched ones (scripts/fetch-source), and libraries that are headers only from this machine's packages. find_package
# finds them as it does elsewhere.

# tlx_provide_package(<name> <version>): find_package(<name>) succeeds from here on; its targets are made in this file.
function(tlx_provide_package name version)
    string(TOLOWER ${name} name)
    set(stem ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/${name}-config)
    file(WRITE ${stem}.cmake "")
    file(WRITE ${stem}-version.cmake "set(PACKAGE_VERSION ${version})\nset(PACKAGE_VERSION_COMPATIBLE TRUE)\n")
endfunction()

# tlx_provide_headers(<target> <folder in /usr/include>): through a link of its own, so that the other headers there, which
# are this machine's, stay out of sight.
function(tlx_provide_headers target folder)
    if(NOT EXISTS /usr/include/${folder})
        message(FATAL_ERROR "/usr/include/${folder} is missing: ${target} needs it")
    endif()
    set(headers ${CMAKE_BINARY_DIR}/headers/${folder})
    file(MAKE_DIRECTORY ${headers})
    file(CREATE_LINK /usr/include/${folder} ${headers}/${folder} SYMBOLIC)
    add_library(${target} INTERFACE IMPORTED GLOBAL)
    target_include_directories(${target} SYSTEM INTERFACE ${headers})
endfunction()

set(TLX_LIBCRYPTO "" CACHE PATH "Prefix of the cross-built libcrypto")
if(NOT EXISTS ${TLX_LIBCRYPTO}/lib/libcrypto.a)
    message(FATAL_ERROR "TLX_LIBCRYPTO is not set to what scripts/build-windows-libcrypto prints")
endif()
add_library(OpenSSL::Crypto STATIC IMPORTED GLOBAL)
set_target_properties(OpenSSL::Crypto PROPERTIES
    IMPORTED_LOCATION ${TLX_LIBCRYPTO}/lib/libcrypto.a
    INTERFACE_INCLUDE_DIRECTORIES ${TLX_LIBCRYPTO}/include
    INTERFACE_LINK_LIBRARIES bcrypt)
tlx_provide_package(OpenSSL 3.0)

if(TLX_TOOLS)
    tlx_provide_headers(CLI11::CLI11 CLI)
    tlx_provide_package(CLI11 2.1)
    tlx_provide_headers(nlohmann_json::nlohmann_json nlohmann)
    tlx_provide_package(nlohmann_json 3.11)
endif()

# What is built here is linked into each program of the tests; nobody debugs or hurries it. Linking takes four times as long
# with GoogleTest that is not optimised.
set(tlx_shared ${BUILD_SHARED_LIBS})
set(tlx_flags ${CMAKE_CXX_FLAGS_RELEASE})
set(BUILD_SHARED_LIBS OFF)
set(CMAKE_CXX_FLAGS_RELEASE "-O1 -DNDEBUG")
if(TLX_TESTS)
    set(BUILD_GMOCK OFF)
    set(INSTALL_GTEST OFF)
    add_subdirectory(/usr/src/googletest googletest EXCLUDE_FROM_ALL SYSTEM)
    tlx_provide_package(GTest 1.12)
    # The build runs nothing that it made.
    set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
endif()

if(TLX_BENCH)
    set(TLX_BENCHMARK_SOURCE "" CACHE PATH "Source of Google Benchmark")
    if(NOT EXISTS ${TLX_BENCHMARK_SOURCE}/CMakeLists.txt)
        message(FATAL_ERROR "TLX_BENCHMARK_SOURCE is not set to what scripts/fetch-source benchmark prints")
    endif()
    set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
    set(BENCHMARK_ENABLE_TESTING OFF)
    set(BENCHMARK_ENABLE_INSTALL OFF)
    set(BENCHMARK_ENABLE_WERROR OFF)
    set(GIT_VERSION 1.7)  # which Debian's source has no repository to ask for
    add_subdirectory(${TLX_BENCHMARK_SOURCE} benchmark EXCLUDE_FROM_ALL SYSTEM)
    tlx_provide_package(benchmark 1.7)
endif()
set(BUILD_SHARED_LIBS ${tlx_shared})
set(CMAKE_CXX_FLAGS_RELEASE ${tlx_flags})
