# Windows: the programs, the Qt libraries and plugins they load and the compiler's
# runtime, all in one folder, as Windows programs are installed. The tool runs ZEDA.exe
# from its own folder there, and Qt finds its plugins in the subfolders beside it.
# cpack gives a zip to unpack anywhere and an installer (NSIS) with a Start-menu entry
# and an uninstaller.

install(TARGETS panomat-set panomat-ctl panomat-sim zeda_search RUNTIME DESTINATION .)
install(FILES "${PROJECT_SOURCE_DIR}/tools/search/ZEDA.conf" DESTINATION .)

foreach(module Core Gui Widgets Network)
  install(FILES "$<TARGET_FILE:Qt6::${module}>" DESTINATION .)
endforeach()
install(FILES "$<TARGET_FILE:Qt6::QWindowsIntegrationPlugin>" DESTINATION platforms)
# The native look of Windows 10 and 11 is a plugin of its own.
if(TARGET Qt6::QWindowsVistaStylePlugin)
  install(FILES "$<TARGET_FILE:Qt6::QWindowsVistaStylePlugin>" DESTINATION styles)
endif()

# The MinGW-w64 runtime the programs and Qt link: C++ library, unwinder, threads.
set(PANOMAT_MINGW_RUNTIME)
foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${dll}
                  OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${path}" OR NOT EXISTS "${path}")
    message(FATAL_ERROR "The compiler does not know where ${dll} is (${path})")
  endif()
  list(APPEND PANOMAT_MINGW_RUNTIME "${path}")
endforeach()
install(FILES ${PANOMAT_MINGW_RUNTIME} DESTINATION .)
# For the test runs under wine: the folders holding the runtime.
set(PANOMAT_MINGW_RUNTIME "${PANOMAT_MINGW_RUNTIME}" PARENT_SCOPE)

install(FILES "${PROJECT_SOURCE_DIR}/README.md" DESTINATION . RENAME README.txt)

set(CPACK_PACKAGE_NAME panomat-set)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "Panomat Set developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "configure network video-wall controllers")
set(CPACK_PACKAGE_FILE_NAME "panomat-set-${PROJECT_VERSION}-windows-x86_64")
set(CPACK_PACKAGE_INSTALL_DIRECTORY "Panomat Set")
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR ZIP NSIS)
# The zip unpacks into a folder of its own name.
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY ON)

# The installer: per machine, into Program Files, a Start-menu entry for the tool,
# an entry in "Apps & features" with an uninstaller that removes every file it put.
set(CPACK_NSIS_PACKAGE_NAME "Panomat Set ${PROJECT_VERSION}")
set(CPACK_NSIS_DISPLAY_NAME "Panomat Set")
set(CPACK_NSIS_INSTALL_ROOT "$PROGRAMFILES64")
set(CPACK_NSIS_EXECUTABLES_DIRECTORY ".")
set(CPACK_PACKAGE_EXECUTABLES "panomat-set;Panomat Set")
set(CPACK_NSIS_ENABLE_UNINSTALL_BEFORE_INSTALL ON)
set(CPACK_NSIS_MODIFY_PATH OFF)
set(CPACK_NSIS_MANIFEST_DPI_AWARE ON)
include(CPack)
