# Compiler settings shared by every target of the project.

if(CVAS_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

if(CVAS_BUILD_FUZZ)
  # Everything is instrumented for libFuzzer; only the fuzz targets link its main.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

if(WIN32)
  # Self-contained executables and DLL: no mingw runtime DLLs to ship or find.
  add_link_options(-static -static-libgcc -static-libstdc++)
endif()

# Warnings are ours to fix in our own code only; third-party code is left as it is.
function(cvas_project_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
endfunction()

# An in-process COM server DLL: no "lib" prefix, and exports named plainly in
# its .def, which on 32-bit Windows the linker matches to their stdcall @N
# symbols without a warning.
function(cvas_com_dll target)
  set_target_properties(${target} PROPERTIES PREFIX "")
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_link_options(${target} PRIVATE -Wl,--enable-stdcall-fixup)
  endif()
endfunction()
