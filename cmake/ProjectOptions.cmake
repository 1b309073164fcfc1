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
