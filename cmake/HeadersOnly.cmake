# Stands in for Qt and log4cplus where they are not to be had for the system that is compiled for: their headers on this
# machine are enough to compile with, and nothing is linked.
find_path(QT_HEADERS QtCore/QString PATHS /usr/include/x86_64-linux-gnu/qt5 NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_program(QT_MOC moc PATHS /usr/lib/qt5/bin NO_DEFAULT_PATH REQUIRED)
find_path(LOG4CPLUS_HEADERS log4cplus/logger.h PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)

set(Qt5Core_VERSION_MAJOR 5)
set(Qt5Core_VERSION_MINOR 15)
add_executable(Qt5::moc IMPORTED)
set_target_properties(Qt5::moc PROPERTIES IMPORTED_LOCATION "${QT_MOC}")

foreach(MODULE Core Network Xml XmlPatterns)
  add_library(Qt5::${MODULE} INTERFACE IMPORTED)
  target_include_directories(Qt5::${MODULE} SYSTEM INTERFACE "${QT_HEADERS}" "${QT_HEADERS}/Qt${MODULE}")
endforeach()
target_link_libraries(Qt5::Network INTERFACE Qt5::Core)
target_link_libraries(Qt5::Xml INTERFACE Qt5::Core)
target_link_libraries(Qt5::XmlPatterns INTERFACE Qt5::Network)

# By a link, because beside them lie the headers of this machine's C library.
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/headers")
file(CREATE_LINK "${LOG4CPLUS_HEADERS}/log4cplus" "${PROJECT_BINARY_DIR}/headers/log4cplus" SYMBOLIC)
add_library(log4cplus::log4cplus INTERFACE IMPORTED)
target_include_directories(log4cplus::log4cplus SYSTEM INTERFACE "${PROJECT_BINARY_DIR}/headers")
