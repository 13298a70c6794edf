# The Windows build, cross-compiled with the mingw-w64 toolchains of cmake/toolchains: the
# component module POSConnectorKitra.dll (an in-process COM server) from the same sources as
# on Linux, and, for the tests, the reference back office, a test host program and the unit
# tests that make sense on Windows. There is no Qt for Windows here: the dialogs' modules, the
# Qt views, the kitra-host program and its Qt desktop are not built.
#
# Third-party code, all from Debian:
#   {fmt}    header-only, from Debian's own headers (libfmt-dev);
#   pugixml  compiled for the target from Debian's source package (KITRA_PUGIXML_SOURCE: the
#            folder holding pugixml.cpp);
#   SQLite   compiled for the target from the amalgamation made from Debian's source package
#            (KITRA_SQLITE_SOURCE: the folder holding sqlite3.c and sqlite3.h);
#   GoogleTest compiled for the target from the sources Debian ships (/usr/src/googletest).
# `./kitra build --windows` fetches and prepares the two source folders.

set(KITRA_PUGIXML_SOURCE "" CACHE PATH "Folder holding pugixml.cpp and pugixml.hpp")
set(KITRA_SQLITE_SOURCE "" CACHE PATH "Folder holding the SQLite amalgamation (sqlite3.c, sqlite3.h)")
set(KITRA_GTEST_SOURCE "/usr/src/googletest" CACHE PATH "GoogleTest's sources")
foreach(source KITRA_PUGIXML_SOURCE KITRA_SQLITE_SOURCE)
  if(NOT EXISTS "${${source}}")
    message(FATAL_ERROR "${source} must name an existing folder (./kitra build --windows prepares it)")
  endif()
endforeach()

# The C++ runtime is linked into each module. On 64-bit Windows everything is static, so that a
# module is the one file a host needs beside the system's own DLLs: exceptions unwind through the
# system's own tables, across modules. On 32-bit Windows GCC unwinds with DWARF tables that each
# copy of its unwinder registers for its own module only, so an exception thrown in the back
# office's module (a failed save, say) could never reach the connector's handler in another
# module: both modules, and the programs that load them, share the unwinder's DLL
# (libgcc_s_dw2-1.dll, with the threads library it needs), which is installed beside them.
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  add_link_options(-static -static-libgcc -static-libstdc++)
else()
  # Doubles are computed as doubles, as on every other build: the 32-bit default, the x87 unit,
  # keeps 80 bits between steps, so that a rounded total compared with its payments could come
  # out a cent's dust apart and a paid sale be taken for a credit sale. SSE2 is on every 32-bit
  # processor Windows still runs on; the stack is realigned where a caller (a script host, say)
  # hands over one aligned only to 4 bytes.
  add_compile_options(-msse2 -mfpmath=sse -mstackrealign)
  add_link_options(-static-libstdc++ -shared-libgcc)
  set(KITRA_WINDOWS_RUNTIME_DLLS "")
  foreach(runtime libgcc_s_dw2-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${runtime}
                    OUTPUT_VARIABLE runtime_path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${runtime_path}" OR NOT EXISTS "${runtime_path}")
      find_file(runtime_path_found ${runtime} PATHS /usr/${KITRA_WINDOWS_TRIPLET}/lib
                /usr/lib/gcc/${KITRA_WINDOWS_TRIPLET} PATH_SUFFIXES 12-posix 13-posix 14-posix
                NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
      set(runtime_path "${runtime_path_found}")
      unset(runtime_path_found CACHE)
    endif()
    list(APPEND KITRA_WINDOWS_RUNTIME_DLLS "${runtime_path}")
  endforeach()
  # Beside the modules, and beside the test programs.
  file(COPY ${KITRA_WINDOWS_RUNTIME_DLLS} DESTINATION "${CMAKE_BINARY_DIR}")
  file(COPY ${KITRA_WINDOWS_RUNTIME_DLLS} DESTINATION "${CMAKE_BINARY_DIR}/tests/windows")
endif()
# Windows Vista and later: the registry's RegGetValue and RegDeleteTree.
add_compile_definitions(_WIN32_WINNT=0x0601 WINVER=0x0601 NOMINMAX WIN32_LEAN_AND_MEAN)

# {fmt}, header-only: only its own folder of Debian's headers is put on the include path, never
# the rest of the build machine's headers.
set(kitra_fmt_include "${CMAKE_BINARY_DIR}/third-party/include")
file(COPY /usr/include/fmt DESTINATION "${kitra_fmt_include}")
add_library(kitra_fmt INTERFACE)
target_include_directories(kitra_fmt SYSTEM INTERFACE "${kitra_fmt_include}")
target_compile_definitions(kitra_fmt INTERFACE FMT_HEADER_ONLY)
add_library(fmt::fmt ALIAS kitra_fmt)

add_library(kitra_pugixml STATIC "${KITRA_PUGIXML_SOURCE}/pugixml.cpp")
target_include_directories(kitra_pugixml SYSTEM PUBLIC "${KITRA_PUGIXML_SOURCE}")
target_compile_options(kitra_pugixml PRIVATE -w)
add_library(pugixml::pugixml ALIAS kitra_pugixml)

enable_language(C)
add_library(kitra_sqlite STATIC "${KITRA_SQLITE_SOURCE}/sqlite3.c")
target_include_directories(kitra_sqlite SYSTEM PUBLIC "${KITRA_SQLITE_SOURCE}")
target_compile_definitions(kitra_sqlite PRIVATE SQLITE_THREADSAFE=1 SQLITE_OMIT_LOAD_EXTENSION)
target_compile_options(kitra_sqlite PRIVATE -w)
add_library(SQLite::SQLite3 ALIAS kitra_sqlite)

set(gtest_force_shared_crt OFF CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
add_subdirectory("${KITRA_GTEST_SOURCE}" "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)

# The sources of an area, less those that only its Linux build has.
function(kitra_windows_sources out area)
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${area}/*.cpp")
  foreach(linux_only ${ARGN})
    list(REMOVE_ITEM sources "${PROJECT_SOURCE_DIR}/${area}/${linux_only}")
  endforeach()
  list(FILTER sources EXCLUDE REGEX "Windows\\.cpp$")
  set(${out} ${sources} PARENT_SCOPE)
endfunction()

# core/: the component registry is the system's registry of classes.
kitra_windows_sources(core_sources core ComponentRegistry.cpp)
add_library(kitra_core STATIC ${core_sources} core/ComponentRegistryWindows.cpp)
target_include_directories(kitra_core PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(kitra_core PUBLIC fmt::fmt advapi32)

# host/: the contracts, and creating the host's registered classes through the system's
# component library.
add_library(kitra_host STATIC host/CreateObjectWindows.cpp host/HostBusinessLayer.cpp)
target_include_directories(kitra_host PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(kitra_host PUBLIC kitra_core ole32 oleaut32 uuid)

# ado/ over the system's ODBC (odbc32). The driver name is registered by the system's ODBC
# administrator, so there is no registration of the project's own.
kitra_windows_sources(ado_sources ado DriverRegistration.cpp)
add_library(kitra_ado STATIC ${ado_sources})
target_include_directories(kitra_ado PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(kitra_ado PUBLIC kitra_core odbc32)

add_library(kitra_restaurant INTERFACE)
target_include_directories(kitra_restaurant INTERFACE ${PROJECT_SOURCE_DIR})

kitra_windows_sources(settings_sources settings)
add_library(kitra_settings STATIC ${settings_sources})
target_link_libraries(kitra_settings PUBLIC kitra_host kitra_ado kitra_core pugixml::pugixml fmt::fmt)

kitra_windows_sources(log_sources log)
add_library(kitra_log STATIC ${log_sources})
target_link_libraries(kitra_log PUBLIC kitra_host kitra_ado kitra_core)

kitra_windows_sources(import_sources import)
add_library(kitra_import STATIC ${import_sources})
target_link_libraries(kitra_import PUBLIC kitra_log kitra_settings kitra_ado kitra_restaurant
                      kitra_host kitra_core)

# The dialogs' Windows views: Win32 and the common controls, over the same rules as the Qt
# views of other systems (settings/, log/).
add_library(kitra_win32_dialogs STATIC
  core/win32/Dialog.cpp
  settings/win32/frmAddRestaurant.cpp
  settings/win32/frmSettings.cpp
  log/win32/frmKitraLog.cpp)
target_link_libraries(kitra_win32_dialogs PUBLIC kitra_settings kitra_log kitra_core comctl32
                      user32 gdi32)

# connector/: the component's classes; its dialogs are the Windows views above
# (DialogsModuleWindows.cpp).
kitra_windows_sources(connector_sources connector Module.cpp DialogsModule.cpp)
add_library(kitra_connector STATIC ${connector_sources} connector/DialogsModuleWindows.cpp)
target_compile_definitions(kitra_connector PUBLIC
  KITRA_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
  KITRA_VERSION_MINOR=${PROJECT_VERSION_MINOR}
  KITRA_VERSION_PATCH=${PROJECT_VERSION_PATCH})
target_link_libraries(kitra_connector PUBLIC kitra_import kitra_win32_dialogs kitra_log
                      kitra_settings kitra_ado kitra_host kitra_core fmt::fmt)

# The contract as automation: widl compiles the IDL into the C++ declarations of IConnector and
# the type library that is embedded in the module. Its imports (oaidl.idl, ocidl.idl) come with
# Wine's development files, and stdole2.tlb, which the library imports, with Wine itself.
find_program(KITRA_WIDL NAMES ${KITRA_WINDOWS_TRIPLET}-widl widl REQUIRED)
find_path(KITRA_WINDOWS_IDL_DIR oaidl.idl PATHS /usr/include/wine/wine/windows /usr/include/wine/windows
          NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(KITRA_STDOLE2_DIR stdole2.tlb
          PATHS /usr/lib/x86_64-linux-gnu/wine/x86_64-windows /usr/lib/wine/x86_64-windows
                /usr/lib/i386-linux-gnu/wine/i386-windows
          NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
set(kitra_idl "${PROJECT_SOURCE_DIR}/connector/automation/POSConnectorKitra.idl")
set(kitra_automation "${CMAKE_BINARY_DIR}/automation")
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(kitra_widl_target --win64)
else()
  set(kitra_widl_target --win32)
endif()
add_custom_command(
  OUTPUT "${kitra_automation}/POSConnectorKitra_h.h" "${kitra_automation}/POSConnectorKitra_i.c"
         "${kitra_automation}/POSConnectorKitra.tlb"
  COMMAND ${CMAKE_COMMAND} -E make_directory "${kitra_automation}"
  COMMAND ${KITRA_WIDL} ${kitra_widl_target} -I "${KITRA_WINDOWS_IDL_DIR}" -L "${KITRA_STDOLE2_DIR}"
          -h -H "${kitra_automation}/POSConnectorKitra_h.h"
          -u -U "${kitra_automation}/POSConnectorKitra_i.c"
          -t -T "${kitra_automation}/POSConnectorKitra.tlb" "${kitra_idl}"
  DEPENDS "${kitra_idl}"
  COMMENT "The connector's contract: IDL to header and type library")
set(KITRA_TYPELIB "${kitra_automation}/POSConnectorKitra.tlb")
configure_file(connector/automation/POSConnectorKitra.rc.in "${kitra_automation}/POSConnectorKitra.rc" @ONLY)
set_source_files_properties("${kitra_automation}/POSConnectorKitra.rc" PROPERTIES
  OBJECT_DEPENDS "${kitra_automation}/POSConnectorKitra.tlb")
enable_language(RC)

# The contract as a client compiles against it: the declarations and the interface's id.
add_library(kitra_contract STATIC "${kitra_automation}/POSConnectorKitra_i.c"
            "${kitra_automation}/POSConnectorKitra_h.h")
target_include_directories(kitra_contract PUBLIC "${kitra_automation}")
target_link_libraries(kitra_contract PUBLIC ole32 oleaut32 uuid)

add_library(kitra_automation STATIC
  connector/automation/AutomationConnector.cpp
  connector/automation/DispatchEventNotifier.cpp)
target_link_libraries(kitra_automation PUBLIC kitra_contract kitra_connector)

# The component modules: exactly the four entry points, under their plain names (the module
# definition file; on 32-bit Windows it maps each to its __stdcall decorated symbol).
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(KITRA_STDCALL_GETCLASSOBJECT " = DllGetClassObject@12")
  set(KITRA_STDCALL_CANUNLOADNOW " = DllCanUnloadNow@0")
  set(KITRA_STDCALL_REGISTERSERVER " = DllRegisterServer@0")
  set(KITRA_STDCALL_UNREGISTERSERVER " = DllUnregisterServer@0")
endif()
foreach(kitra_module POSConnectorKitra KitraBackOffice)
  set(KITRA_MODULE_NAME ${kitra_module})
  configure_file(connector/ComponentModule.def.in "${CMAKE_BINARY_DIR}/${kitra_module}.def" @ONLY)
endforeach()
add_library(POSConnectorKitra SHARED connector/automation/AutomationModule.cpp
            "${kitra_automation}/POSConnectorKitra.rc" "${CMAKE_BINARY_DIR}/POSConnectorKitra.def")
set_target_properties(POSConnectorKitra PROPERTIES PREFIX "" OUTPUT_NAME POSConnectorKitra)
target_link_libraries(POSConnectorKitra PRIVATE kitra_automation)
target_link_options(POSConnectorKitra PRIVATE -Wl,--no-undefined)

# The reference back office, as a module of its own: the host's business layer that the
# connector creates by class (KitraBackOffice.BusinessLayer), registered by regsvr32. Its run
# lock is the command-line program's, which is not built here; its private files are the
# Windows ones (PrivateFilesWindows.cpp).
kitra_windows_sources(backoffice_sources backoffice RunLock.cpp PrivateFiles.cpp)
add_library(kitra_backoffice STATIC ${backoffice_sources} backoffice/PrivateFilesWindows.cpp)
target_include_directories(kitra_backoffice PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(kitra_backoffice PUBLIC kitra_host kitra_ado kitra_core SQLite::SQLite3
                      fmt::fmt pugixml::pugixml)
add_library(KitraBackOffice SHARED backoffice/component/BusinessLayerModule.cpp
            backoffice/component/MachineSettingWindows.cpp "${CMAKE_BINARY_DIR}/KitraBackOffice.def")
set_target_properties(KitraBackOffice PROPERTIES PREFIX "" OUTPUT_NAME KitraBackOffice)
target_link_libraries(KitraBackOffice PRIVATE kitra_backoffice user32 advapi32)
target_link_options(KitraBackOffice PRIVATE -Wl,--no-undefined)

# What the tests need: the reference back office (over SQLite built for the target), the test
# host program, and the unit tests that make sense on Windows.
option(KITRA_WINDOWS_TESTS "Build the Windows test host and unit tests" ON)
if(NOT KITRA_WINDOWS_TESTS)
  return()
endif()

add_library(kitra_test_host STATIC tests/hostsupport/TestBackOffice.cpp)
target_link_libraries(kitra_test_host PUBLIC kitra_backoffice kitra_host kitra_core)

add_subdirectory(tests/windows "${CMAKE_BINARY_DIR}/tests/windows")

# The Windows dialogs' pictures for the documentation (tools/win32-screenshots runs it).
add_executable(kitra-dialog-screenshots tools/screenshots/Win32Screenshots.cpp)
target_link_libraries(kitra-dialog-screenshots PRIVATE kitra_win32_dialogs kitra_backoffice kitra_log
                      kitra_host gdiplus)
