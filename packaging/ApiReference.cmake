# The API reference, of HEADERS, those that are installed: cmake --build --preset release --target api-reference
find_package(Doxygen)
if(NOT DOXYGEN_FOUND)
  return()
endif()

set(DOXYGEN_PROJECT_BRIEF "Connects a file-synchronisation client to the Drovane document-management service")
set(DOXYGEN_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/api-reference")
set(DOXYGEN_GENERATE_LATEX NO)
set(DOXYGEN_HAVE_DOT NO)
set(DOXYGEN_QUIET YES)
set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
# A comment that says what the name says is left out, and so is not asked for.
set(DOXYGEN_EXTRACT_ALL YES)
set(DOXYGEN_SORT_MEMBER_DOCS NO)
# Qt's words, and what makes a symbol visible.
set(DOXYGEN_MACRO_EXPANSION YES)
set(DOXYGEN_EXPAND_ONLY_PREDEF YES)
set(DOXYGEN_PREDEFINED Q_OBJECT= Q_SIGNALS=public Q_SLOTS= DVSYNC_EXPORT= OVSYNC_CORE_EXPORT= OVSYNC_CONFIGURATION_EXPORT=
  OVSYNC_CONFIGURATIONFACTORY_EXPORT= OVSYNC_HTTP_EXPORT= OVSYNC_INTERFACES_EXPORT=)
set(DOXYGEN_FILE_PATTERNS *.md *.h)
set(DOXYGEN_USE_MDFILE_AS_MAINPAGE docs/host-contract.md)

doxygen_add_docs(api-reference docs ${HEADERS} WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
  COMMENT "Writing the API reference to build/.../api-reference/html")
