# What every target of this build shares: language level, warnings, visibility, sanitizers, output folders.
include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
  find_program(OXGENAPI_CCACHE ccache)
  if(OXGENAPI_CCACHE)
    set(CMAKE_C_COMPILER_LAUNCHER "${OXGENAPI_CCACHE}")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${OXGENAPI_CCACHE}")
  endif()
endif()

# How each kind of processor marks where an indirect call may land. Those with an instruction for a product and a sum at
# once round differently when the compiler uses it; numbers shall come out alike everywhere.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  set(OX_BRANCH_PROTECTION -fcf-protection)
else()
  add_compile_options(-ffp-contract=off)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(OX_BRANCH_PROTECTION -mbranch-protection=standard)
  endif()
endif()

set(OX_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wimplicit-fallthrough -Werror)

# Every target of ours calls this once.
function(ox_target name)
  # What overruns a buffer or diverts a call ends the program, tables are read only once it runs, the stack is never
  # code. tests/abi/check looks whether it is so.
  if(NOT OXGENAPI_SANITIZE)
    target_compile_options(${name} PRIVATE
      -fstack-protector-strong -fstack-clash-protection ${OX_BRANCH_PROTECTION}
      "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")  # needs the optimiser
  endif()
  target_link_options(${name} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack)
  target_compile_options(${name} PRIVATE ${OX_WARNINGS} $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>)
  if(OXGENAPI_SANITIZE)
    target_compile_options(${name} PRIVATE -fsanitize=${OXGENAPI_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(${name} PRIVATE -fsanitize=${OXGENAPI_SANITIZE})
  endif()
endfunction()

# Standard headers take half of the time that a file of ours compiles. What is developed is built without this, so that
# a missing include shows.
function(ox_precompile_standard_headers name)
  if(CMAKE_BUILD_TYPE STREQUAL Debug AND NOT OXGENAPI_SANITIZE)
    return()
  endif()
  target_precompile_headers(${name} PRIVATE <algorithm> <functional> <map> <memory> <optional> <string> <unordered_map>
                                            <vector>)
endfunction()

# Turns a text file of the calling folder into an include of string literals.
function(ox_embed_text file output)
  set(script "${PROJECT_SOURCE_DIR}/cmake/EmbedText.cmake")
  add_custom_command(
    OUTPUT "${output}"
    COMMAND ${CMAKE_COMMAND} "-DINPUT=${CMAKE_CURRENT_SOURCE_DIR}/${file}" "-DOUTPUT=${output}" -P "${script}"
    DEPENDS "${file}" "${script}"
    COMMENT "Embedding ${file}"
    VERBATIM)
  cmake_path(GET file STEM name)
  add_custom_target(embedded_text_${name} DEPENDS "${output}")
  if(NOT TARGET embedded_texts)  # what a check needs that compiles nothing
    add_custom_target(embedded_texts)
  endif()
  add_dependencies(embedded_texts embedded_text_${name})
endfunction()
