#pragma once

// Both programs' `explain`, in this process: of a scenario that is played, and of the trace file
// that it leaves.

#include "replay/explain/ExplainScenario.h"
#include "tests/replay/Playing.h"
#include "tests/replay/trace/TraceTool.h"

#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace TestSupport {

inline void replaceAll( std::string & text, const std::string & what, const std::string & by ) {
   for ( std::size_t at = text.find( what ); at != std::string::npos;
         at = text.find( what, at + by.size() ) ) {
      text.replace( at, what.size(), by );
   }
}

/// `interlock-replay explain` with these arguments; the scenario is called `s`.
inline Shown explainRun( std::string_view scenario, std::vector< std::string > arguments ) {
   const TemporaryFolder folder;
   std::ofstream( folder / "s" ) << scenario;
   arguments.insert( arguments.begin(), { "interlock-replay", "explain" } );
   arguments.push_back( folder / "s" );
   std::vector< const char * > argv;
   for ( const std::string & argument : arguments ) {
      argv.push_back( argument.c_str() );
   }
   const OutputFile outFile;
   const OutputFile errFile;
   Replay::Writer out( outFile.descriptor() );
   Replay::Writer err( errFile.descriptor() );
   const int status =
      Explain::explainScenario( static_cast< int >( argv.size() ), argv.data(), out, err );
   Shown shown{ status, outFile.text(), errFile.text() };
   replaceAll( shown.err, folder / "s", "s" );
   return shown;
}

/// `interlock-trace explain` of what the scenario leaves in a trace file `t` of at most `bytes`.
inline Shown explainTrace( std::string_view scenario,
                           std::vector< std::string > arguments,
                           std::size_t bytes = std::size_t{ 1 } << 20U ) {
   const TemporaryFolder folder;
   {
      Jotter::TraceFile file( folder / "t", bytes );
      Replay::RunOptions options;
      options.traceFile = &file;
      EXPECT_EQ( play( scenario, options ).error, "" );
   }
   arguments.insert( arguments.begin(), "explain" );
   arguments.push_back( folder / "t" );
   Shown shown = run( arguments );
   replaceAll( shown.err, folder / "t", "t" );
   return shown;
}

// ---- What many tests begin with ----

/// The basic interlock, and a LAG that needs egress ACLs.
inline const std::string basic = "mlag state 3\n"
                                 "link Ethernet49 2\n"
                                 "mlag peer-link Ethernet49\n"
                                 "mlag intf PortChannel10 1 2\n"
                                 "lag PortChannel10\n"
                                 "start basic\n";

/// The peer-coordinated one, which asks at 1 s.
inline const std::string peer = "mlag intf PortChannel10 1 2\n"
                                "mlag peer-interlock on\n"
                                "lag PortChannel10\n"
                                "start controller\n"
                                "at 1\n"
                                "member PortChannel10 Ethernet1\n";

inline const std::string vlan = "switchport PortChannel10\n"
                                "lag PortChannel10\n"
                                "start vlan-xlate\n";

/// The answer of a scenario that is played, behind an empty line.
inline std::string explained( const std::string & scenario,
                              const std::vector< std::string > & arguments = { "Ethernet1",
                                                                               "PortChannel10" } ) {
   const Shown shown = explainRun( scenario, arguments );
   EXPECT_EQ( shown.status, 0 );
   EXPECT_EQ( shown.err, "" );
   return '\n' + shown.out;
}

} // namespace TestSupport
