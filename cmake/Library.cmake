# The library: its objects as the internal static target tarn_objects, which tests and benchmarks
# link to reach what is not exported, and the shared library made of them.

if(ANDROID)
  set(tarn_platform_sources)
  set(tarn_host_exports)
else()
  set(tarn_platform_sources platform/host/host_platform.cpp)
  set(tarn_host_exports "__android_log_print; __system_property_get;")
endif()

# One name for what systems call by several.
string(REGEX REPLACE "^AMD64$" "x86_64" tarn_architecture "${CMAKE_SYSTEM_PROCESSOR}")
string(REGEX REPLACE "^arm64$" "aarch64" tarn_architecture "${tarn_architecture}")

# Row kernels above the architecture's baseline: each file with its own flags. Always optimised: a
# function of a shared header that is not inlined there would stay behind as a copy with those flags.
if(tarn_architecture STREQUAL "x86_64")
  set(tarn_level_sources engines/kernels/avx2.cpp engines/kernels/avx512.cpp)
  # Where g++ knows a bound of what is copied at a row's end, it would write loops of eight bytes and
  # repeated string instructions, which are slower than the C library's memcpy.
  set(tarn_level_options -O2 $<$<CXX_COMPILER_ID:GNU>:-mstringop-strategy=libcall>)
  set_source_files_properties(engines/kernels/avx2.cpp PROPERTIES COMPILE_OPTIONS
    "${tarn_level_options};-mavx2;-mfma")
  set_source_files_properties(engines/kernels/avx512.cpp PROPERTIES COMPILE_OPTIONS
    "${tarn_level_options};-mavx512f;-mavx512bw;-mavx512vbmi;-mavx512vnni")
elseif(tarn_architecture STREQUAL "aarch64")
  set(tarn_level_sources engines/kernels/neon.cpp)
  set_source_files_properties(${tarn_level_sources} PROPERTIES COMPILE_OPTIONS "-O2")
endif()

add_library(tarn_objects STATIC
  engines/TarnQCEngine.cpp
  engines/TarnQCNEONEngine.cpp
  engines/TarnVXEngine.cpp
  engines/bin_frame.cpp
  engines/engine_parts.cpp
  engines/ev_frame.cpp
  engines/kernels/levels.cpp
  engines/kernels/scalar.cpp
  layout/pitch.cpp
  platform/log.cpp
  solution/TarnSolution.cpp
  solution/diagnostics.cpp
  solution/dispatch.cpp
  solution/solution_impl.cpp
  ${tarn_platform_sources}
  ${tarn_level_sources})
target_include_directories(tarn_objects PUBLIC ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
if(NOT ANDROID)
  target_include_directories(tarn_objects PUBLIC ${PROJECT_SOURCE_DIR}/platform/host)
endif()
target_link_libraries(tarn_objects PRIVATE tarn_compile_options)
set_target_properties(tarn_objects PROPERTIES
  POSITION_INDEPENDENT_CODE ON
  CXX_VISIBILITY_PRESET hidden
  VISIBILITY_INLINES_HIDDEN ON)
target_compile_options(tarn_objects PRIVATE
  -fno-exceptions -fno-math-errno -fstack-protector-strong
  # An operation stays within 16 KiB of stack: one frame holds the row of sums, another at most a
  # packed line.
  -Wframe-larger-than=9000
  $<$<STREQUAL:${tarn_architecture},aarch64>:-mbranch-protection=standard>)

# A host's stand-ins for the platform's functions are exported too, so that a client can replace them.
set(tarn_exports ${CMAKE_BINARY_DIR}/exports.map)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS cmake/exports.map)
file(READ cmake/exports.map tarn_export_map)
string(REPLACE "local:" "  ${tarn_host_exports}\n  local:" tarn_export_map "${tarn_export_map}")
file(CONFIGURE OUTPUT ${tarn_exports} CONTENT "${tarn_export_map}" @ONLY)

add_library(tarn SHARED $<TARGET_OBJECTS:tarn_objects>)
add_library(tarn::tarn ALIAS tarn)
target_include_directories(tarn INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/engines>)
target_link_libraries(tarn PRIVATE $<$<BOOL:${ANDROID}>:log>)
# The soname carries no version: the device's loader finds the library by this very name.
set_target_properties(tarn PROPERTIES
  OUTPUT_NAME Tarn.camera.mirova
  LINK_DEPENDS ${tarn_exports})
target_link_options(tarn PRIVATE
  -Wl,--version-script=${tarn_exports}
  -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,max-page-size=16384)
