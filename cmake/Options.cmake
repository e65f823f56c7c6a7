# How every target is compiled: the language, the warnings, the sanitizers, where programs and libraries go.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")

if(WIN32)
  # The loader finds a loaded library by its name alone, and that is OvSyncCore on every system.
  set(CMAKE_SHARED_LIBRARY_PREFIX "")
endif()

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror)

# What gcc says of one source that is about another.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-Wno-shadow -Wno-subobject-linkage)
endif()

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE}")
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
endif()

# What Debian builds its own packages with.
if(CMAKE_BUILD_TYPE STREQUAL Release AND NOT WIN32)
  add_compile_options(-D_FORTIFY_SOURCE=2)
  add_link_options(-Wl,-z,relro,-z,now)
endif()

set(DVSYNC_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")
if(DVSYNC_SANITIZE)
  add_compile_options(-fsanitize=${DVSYNC_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  # Qt's flags hold several values of their enumeration at once.
  add_compile_options(-fno-sanitize=enum)
  add_link_options(-fsanitize=${DVSYNC_SANITIZE})
endif()

# Qt's lower-case keywords are macros that take words from everyone else.
add_compile_definitions(QT_NO_KEYWORDS)
