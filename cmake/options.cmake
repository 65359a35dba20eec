# What is built, and with which flags.

option(ZELKORA_BUILD_TESTS "Build the tests" ON)
option(ZELKORA_BUILD_TOOLS "Build zelkoractl" ON)
option(ZELKORA_BUILD_SIM "Build the virtual controllers" ON)
option(ZELKORA_WERROR "Treat warnings as errors" OFF)
option(ZELKORA_SANITIZE "Build with the address and undefined behaviour sanitizers" OFF)
option(ZELKORA_FUZZ "Build the fuzz targets alone, with clang" OFF)
option(ZELKORA_COVERAGE "Build with coverage counters" OFF)
set(ZELKORA_SUPPORT_ADDRESS "support@zelkora.example" CACHE STRING
    "Address printed when a controller is not supported")

# Parts left out, with the reason; printed by the configure summary.
set_property(GLOBAL PROPERTY zelkora_left_out "")
function(zelkora_leave_out what why)
  set_property(GLOBAL APPEND PROPERTY zelkora_left_out "${what} (${why})")
endfunction()

add_library(zelkora_flags INTERFACE)
target_compile_options(zelkora_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                               -Wno-sign-conversion)
if(ZELKORA_WERROR)
  target_compile_options(zelkora_flags INTERFACE -Werror)
endif()
if(ZELKORA_SANITIZE)
  target_compile_options(zelkora_flags INTERFACE -fsanitize=address,undefined
                                                 -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zelkora_flags INTERFACE -fsanitize=address,undefined)
endif()
if(ZELKORA_COVERAGE)
  target_compile_options(zelkora_flags INTERFACE --coverage -fprofile-abs-path)
  target_link_options(zelkora_flags INTERFACE --coverage)
endif()

# The flags of the programs: the same warnings, and the C++ runtime.
add_library(zelkora_program_flags INTERFACE)
target_link_libraries(zelkora_program_flags INTERFACE zelkora_flags ${zelkora_cxx_runtime})
