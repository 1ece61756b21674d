# The Debian packages: one for each component, and the debug symbols of those that hold programs or
# libraries. `./dev package` builds and checks them.
set( CPACK_GENERATOR DEB )
set( CPACK_DEB_COMPONENT_INSTALL ON )
set( CPACK_COMPONENTS_ALL library development tools )
set( CPACK_PACKAGE_CONTACT
   "libVeloIntfInterlock developers <developers@velo-intf-interlock.example>" )
set( CPACK_PACKAGING_INSTALL_PREFIX /usr )
set( CPACK_DEBIAN_DEBUGINFO_PACKAGE ON )
set( CPACK_DEBIAN_FILE_NAME DEB-DEFAULT )
set( CPACK_DEBIAN_PACKAGE_SOURCE libvelointfinterlock )
set( CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON )
# The tools are linked with the library of this very build.
set( CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY} )
set( CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON )
set( CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON )

set( about "Interlocks decide member port by member port whether a port may join its
link aggregation (LAG) now: not before its egress ACL, or its VLAN
translation, is in the hardware. The agents of a switch load the library,
keep its entities up to date and obey its verdicts.
." )

# Two libraries that are built together, change together and carry one number.
set( CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libvelointfinterlock${INTERLOCK_ABI} )
set( CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs )
set( CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/triggers )
set( CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON )
set( CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=" )
set( CPACK_DEBIAN_LIBRARY_DESCRIPTION
   "interlocks that hold ports out of their LAGs - library
${about}
This package holds the two libraries that an agent needs to run." )

set( CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvelointfinterlock-dev )
set( CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel )
set( CPACK_DEBIAN_DEVELOPMENT_DEBUGINFO_PACKAGE OFF )
set( CPACK_COMPONENT_DEVELOPMENT_DEPENDS library )
set( CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
   "interlocks that hold ports out of their LAGs - development
${about}
This package holds what an agent's author needs: headers, links for the
linker, and files for CMake and pkg-config." )

set( CPACK_DEBIAN_TOOLS_PACKAGE_NAME velo-intf-interlock-tools )
set( CPACK_DEBIAN_TOOLS_PACKAGE_SECTION net )
set( CPACK_COMPONENT_TOOLS_DEPENDS library )
set( CPACK_DEBIAN_TOOLS_DESCRIPTION
   "interlocks that hold ports out of their LAGs - tools
${about}
This package holds two programs: interlock-replay, which plays scenarios to
the interlocks and shows what they decide, and interlock-trace, which prints
the trace files that agents leave." )

# What Debian wants to find in each package.
find_program( GZIP gzip REQUIRED )
string( TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC ) # that of SOURCE_DATE_EPOCH
configure_file( debian/changelog.in changelog @ONLY )
execute_process( COMMAND ${GZIP} -9 --no-name --force ${CMAKE_CURRENT_BINARY_DIR}/changelog
   COMMAND_ERROR_IS_FATAL ANY )
foreach( component IN LISTS CPACK_COMPONENTS_ALL )
   string( TOUPPER ${component} name )
   install( FILES debian/copyright DESTINATION ${docs}/${CPACK_DEBIAN_${name}_PACKAGE_NAME}
      COMPONENT ${component} )
   install( FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz
      DESTINATION ${docs}/${CPACK_DEBIAN_${name}_PACKAGE_NAME} COMPONENT ${component} )
endforeach()

include( CPack )
