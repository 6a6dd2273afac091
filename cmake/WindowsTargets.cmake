# VNMATH.dll, its type library and resources, and the Windows-side tests.
enable_language(RC)

# The target-prefixed widl comes with mingw-w64-tools; a plain widl only with
# Wine's optional tools package.
find_program(WIDL NAMES ${VN_MINGW_TRIPLE}-widl widl REQUIRED)
set(VN_WINE_IDL_DIR /usr/include/wine/wine/windows CACHE PATH "Windows IDL files for widl")
find_path(VN_STDOLE_DIR stdole2.tlb PATHS /usr/lib/x86_64-linux-gnu/wine/x86_64-windows /usr/lib/i386-linux-gnu/wine/i386-windows
          NO_CMAKE_FIND_ROOT_PATH REQUIRED)

set(VN_GEN ${CMAKE_BINARY_DIR}/generated)
file(MAKE_DIRECTORY ${VN_GEN})

# The IDL is the method list run through the preprocessor.
add_custom_command(
  OUTPUT ${VN_GEN}/VNMATH.idl
  COMMAND ${CMAKE_C_COMPILER} -E -P -x c -I${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/resources/VNMATH.idl.in -o ${VN_GEN}/VNMATH.idl
  DEPENDS ${CMAKE_SOURCE_DIR}/resources/VNMATH.idl.in ${CMAKE_SOURCE_DIR}/frame/method_list.h
  COMMENT "Generating VNMATH.idl")
add_custom_command(
  OUTPUT ${VN_GEN}/VNMATH.tlb ${VN_GEN}/VNMATH_h.h ${VN_GEN}/VNMATH_i.c
  COMMAND ${WIDL} ${VN_WIDL_TARGET} -I${VN_WINE_IDL_DIR} -L${VN_STDOLE_DIR}
          -t -o ${VN_GEN}/VNMATH.tlb -h -H ${VN_GEN}/VNMATH_h.h -u -U ${VN_GEN}/VNMATH_i.c ${VN_GEN}/VNMATH.idl
  DEPENDS ${VN_GEN}/VNMATH.idl
  COMMENT "Compiling the type library")

set(VN_STATIC_RUNTIME -static -static-libgcc -static-libstdc++)

file(GLOB VN_ICON_FILES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/resources/icons/*)
file(GLOB VN_FRAME_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/frame/*.cpp)
set_source_files_properties(${CMAKE_SOURCE_DIR}/resources/VNMATH.rc PROPERTIES
  OBJECT_DEPENDS "${VN_GEN}/VNMATH.tlb;${CMAKE_SOURCE_DIR}/resources/messages.rc;${CMAKE_SOURCE_DIR}/resources/strings.rc;${CMAKE_SOURCE_DIR}/resources/resource_ids.h;${VN_ICON_FILES}")
set_source_files_properties(${VN_GEN}/VNMATH.tlb PROPERTIES HEADER_FILE_ONLY ON GENERATED ON)
add_library(VNMATH SHARED ${VN_FRAME_SOURCES} ${VN_GEN}/VNMATH_i.c ${VN_GEN}/VNMATH.tlb ${VN_GEN}/VNMATH_h.h
            ${CMAKE_SOURCE_DIR}/resources/VNMATH.rc ${CMAKE_SOURCE_DIR}/frame/VNMATH.def)
set_target_properties(VNMATH PROPERTIES PREFIX "" OUTPUT_NAME VNMATH)
target_include_directories(VNMATH PRIVATE ${CMAKE_SOURCE_DIR} ${VN_GEN} ${CMAKE_SOURCE_DIR}/resources)
target_compile_definitions(VNMATH PRIVATE WIN32_LEAN_AND_MEAN NOMINMAX UNICODE _UNICODE)
target_link_libraries(VNMATH PRIVATE vnanalysis oleaut32 ole32 uuid advapi32 user32 gdi32 ${VN_STATIC_RUNTIME})
if(CMAKE_SYSTEM_PROCESSOR MATCHES "i686")
  target_link_options(VNMATH PRIVATE -Wl,--kill-at)
endif()

# The assembly manifest for registration-free use, next to the DLL.
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
  set(VN_MANIFEST_ARCH amd64)
else()
  set(VN_MANIFEST_ARCH x86)
endif()
set(VN_MANIFEST_MISC "recomposeonresize,cantlinkinside,insideout,activatewhenvisible,invisibleatruntime,actslikelabel,setclientsitefirst")
configure_file(${CMAKE_SOURCE_DIR}/resources/VNAnalysisControls.manifest.in ${CMAKE_BINARY_DIR}/VNAnalysisControls.manifest @ONLY)

# The cost of the frame as a late-bound host sees it (run by scripts/bench.sh,
# not a test).
add_executable(bench_com ${CMAKE_SOURCE_DIR}/bench/com/bench_com.cpp)
target_compile_definitions(bench_com PRIVATE WIN32_LEAN_AND_MEAN NOMINMAX UNICODE _UNICODE)
target_link_libraries(bench_com PRIVATE vnanalysis ole32 oleaut32 uuid ${VN_STATIC_RUNTIME})
add_dependencies(bench_com VNMATH)

if(VN_BUILD_TESTS)
  enable_testing()
  add_subdirectory(tests/frame)
endif()
