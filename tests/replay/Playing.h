#pragma once

// Runs a scenario given as text, in this process, and gives back what it showed.

#include "replay/HostClock.h"
#include "replay/JsonLinesOutput.h"
#include "replay/Parser.h"
#include "replay/Runner.h"
#include "replay/ScenarioError.h"
#include "replay/TextOutput.h"
#include "replay/Writer.h"

#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TestSupport {

using Json = nlohmann::json;

/// What is shown, as text; the error that ended the run, as "LINE: what is wrong".
struct Played {
   std::string shown;
   std::string error;
   std::size_t failed = 0;

   std::vector< Json > objects() const {
      std::vector< Json > all;
      for ( std::size_t at = 0; at < shown.size(); ) {
         const std::size_t end = shown.find( '\n', at );
         all.push_back( Json::parse( shown.substr( at, end - at ) ) );
         at = end + 1;
      }
      return all;
   }
   /// Those of one kind.
   std::vector< Json > objects( std::string_view kind ) const {
      std::vector< Json > some;
      for ( const Json & object : objects() ) {
         if ( object.at( "kind" ) == kind ) {
            some.push_back( object );
         }
      }
      return some;
   }
   /// The only one of its kind.
   Json object( std::string_view kind ) const {
      const auto some = objects( kind );
      EXPECT_EQ( some.size(), 1U ) << shown;
      return some.size() == 1 ? some.front() : Json();
   }
};

/// A writer, and what it has written.
class Captured {
 public:
   Replay::Writer & writer() noexcept { return writer_; }
   std::string text() {
      writer_.flush();
      std::rewind( file_.get() );
      std::string text;
      std::array< char, 4096 > piece{};
      while ( const std::size_t size = std::fread( piece.data(), 1, piece.size(), file_.get() ) ) {
         text.append( piece.data(), size );
      }
      return text;
   }

 private:
   std::unique_ptr< std::FILE, int ( * )( std::FILE * ) > file_{ std::tmpfile(), std::fclose };
   Replay::Writer writer_{ fileno( file_.get() ) };
};

using MakeOutput = std::unique_ptr< Replay::Output > ( * )( Replay::Writer & );

inline Played playInto( MakeOutput makeOutput,
                        std::string_view scenario,
                        const Replay::RunOptions & options ) {
   Played played;
   Captured captured;
   const auto output = makeOutput( captured.writer() );
   try {
      const Replay::Scenario parsed = Replay::parseScenario( scenario );
      Replay::VirtualHostClock clock;
      output->begin( "test.scenario" );
      played.failed = Replay::runScenario( parsed, options, clock, *output );
   } catch ( const Replay::ScenarioError & error ) {
      played.error = std::to_string( error.line() ) + ": " + error.what();
   }
   played.shown = captured.text();
   return played;
}

inline Played play( std::string_view scenario, const Replay::RunOptions & options = {} ) {
   return playInto( &Replay::jsonLinesOutput, scenario, options );
}

inline Played playAsText( std::string_view scenario, const Replay::RunOptions & options = {} ) {
   return playInto( &Replay::textOutput, scenario, options );
}

inline Played playInColours( std::string_view scenario, const Replay::RunOptions & options = {} ) {
   return playInto( &Replay::colouredTextOutput, scenario, options );
}

/// MLAG is active and PortChannel10, with Ethernet1, needs its egress ACL.
inline const std::string aclNeeded = "mlag state 3\n"
                                     "link Ethernet49 2\n"
                                     "mlag peer-link Ethernet49\n"
                                     "mlag intf PortChannel10 1 2\n"
                                     "lag PortChannel10 Ethernet1\n";

} // namespace TestSupport
