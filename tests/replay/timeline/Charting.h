#pragma once

// Plays a scenario given as text and gives back its chart, or that in words.

#include "replay/HostClock.h"
#include "replay/Numbers.h"
#include "replay/Parser.h"
#include "replay/Runner.h"
#include "replay/TextOutput.h"
#include "replay/Writer.h"
#include "replay/timeline/Labels.h"
#include "replay/timeline/Recorder.h"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace TestSupport {

inline Replay::Timeline::Chart chartOf( std::string_view text ) {
   const Replay::Scenario scenario = Replay::parseScenario( text );
   const std::unique_ptr< std::FILE, int ( * )( std::FILE * ) > file( std::tmpfile(), std::fclose );
   Replay::Writer writer( fileno( file.get() ) );
   const auto output = Replay::textOutput( writer );
   Replay::Timeline::Recorder recorder( scenario, 0, *output );
   Replay::VirtualHostClock clock;
   recorder.begin( "test.scenario" );
   Replay::runScenario( scenario, {}, clock, recorder );
   return recorder.takeChart();
}

inline std::string inWords( const std::string & who,
                            const std::vector< Replay::Timeline::Span > & spans ) {
   std::string text;
   for ( const Replay::Timeline::Span & span : spans ) {
      text += who + ": " + Replay::Timeline::timeLabel( span.from ) + "-" +
              Replay::Timeline::timeLabel( span.to ) + ( span.lasts ? " (end) " : " " ) +
              std::string( nameOf( span.kind ) ) + ", " + span.why + "\n";
   }
   return text;
}

/// All spans, one a line: of the LAGs and of their members.
inline std::string spansOf( std::string_view scenario ) {
   std::string text;
   for ( const auto & one : chartOf( scenario ).switches ) {
      const std::string in = one.name.empty() ? "" : std::string( one.name ) + " ";
      for ( const auto & lag : one.lags ) {
         text += inWords( in + lag.lag.stringValue(), lag.links );
         for ( const auto & member : lag.members ) {
            text += inWords( in + member.member.stringValue(), member.spans );
         }
      }
   }
   return text;
}

inline std::string inWords( const std::string & who,
                            const std::vector< Replay::Timeline::Mark > & marks ) {
   using Replay::Timeline::MarkKind;
   std::string text;
   for ( const Replay::Timeline::Mark & mark : marks ) {
      constexpr std::string_view letters = "crAL!X"; // in the order of the kinds
      text += who + ": " + Replay::Timeline::timeLabel( mark.time ) + " " +
              letters[ indexOf( mark.kind ) ] + " " + mark.what + "\n";
   }
   return text;
}

/// All marks, one a line: of the switches and of their LAGs.
inline std::string marksOf( std::string_view scenario ) {
   std::string text;
   for ( const auto & one : chartOf( scenario ).switches ) {
      const std::string in = one.name.empty() ? "" : std::string( one.name ) + " ";
      text += inWords( in + "switch", one.marks );
      for ( const auto & lag : one.lags ) {
         text += inWords( in + lag.lag.stringValue(), lag.marks );
      }
   }
   return text;
}

} // namespace TestSupport
