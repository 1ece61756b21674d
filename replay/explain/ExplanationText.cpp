// An explanation as text: what holds or admits the member in the first line, then each gate.

#include "replay/Text.h"
#include "replay/explain/Explanation.h"
#include "replay/explain/Moment.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

namespace Explain {

namespace {

constexpr std::size_t wordColumn = 6;
constexpr std::size_t sawColumn = 36;
constexpr std::size_t beforeTime = 18; // the width of a moment
// How many spans before the current one there is room for, on one screen.
constexpr std::size_t beforeOfOne = 4;
constexpr std::size_t beforeOfTwo = 1; // each

class Page {
 public:
   explicit Page( Replay::Writer & writer ) noexcept : writer_( writer ) {}

   Page & at( std::size_t column ) {
      const std::size_t used = Replay::columns( line_ );
      line_.append( used < column ? column - used : 1, ' ' );
      return *this;
   }
   Page & add( std::string_view text ) {
      Replay::appendPrintable( line_, text );
      return *this;
   }
   void end() {
      writer_.buffer() += line_;
      writer_.buffer() += '\n';
      line_.clear();
   }

 private:
   Replay::Writer & writer_;
   std::string line_;
};

std::string nameShown( const std::string & name ) {
   return name.empty() ? "\"\"" : name;
}

std::string_view verdictOf( bool admitted ) noexcept {
   return admitted ? "ADMITTED" : "HELD";
}

std::string sinceText( const AtGate & at ) {
   return at.since ? " since " + moment( *at.since ) + ( at.orEarlier ? " or earlier" : "" )
                   : std::string( ", which has not looked at it" );
}

// Of those that hold, or of all that admit, in the order of the gates.
void showHeadline( const Explanation & known, Page & page ) {
   const Asked & asked = known.asked;
   page.add( nameShown( asked.pair.member ) ).add( " in " ).add( nameShown( asked.pair.lag ) );
   if ( !asked.switchName.empty() ) {
      page.add( " on " ).add( asked.switchName );
   }
   page.add( " is " ).add( verdictOf( known.admitted ) ).add( " at " ).add( moment( asked.at ) );
   bool first = true;
   for ( const AtGate & at : known.gates ) {
      if ( at.admitted == known.admitted ) {
         page.add( first ? ", by " : " and by " ).add( nameOf( at.gate ) );
         page.add( sinceText( at ) );
         first = false;
      }
   }
   page.end();
}

// What it does, by its decision; and where its output says otherwise, what it did.
std::string verdictText( const AtGate & at ) {
   const bool admits = at.decision ? at.decision->admitted() : at.admitted;
   if ( admits != at.admitted ) {
      return admits ? "decided to admit it" : "decided to hold it";
   }
   return admits ? "admits it" : "holds it";
}

void showLooked( const AtGate & at, Page & page ) {
   for ( const Looked & one : at.looked ) {
      page.at( wordColumn ).add( one.check ).at( sawColumn ).add( one.saw );
      if ( one.decisive ) {
         page.add( "  <- " ).add( verdictText( at ) );
      }
      page.end();
   }
}

void showBefore( const AtGate & at, std::size_t most, Page & page ) {
   if ( at.before.empty() ) {
      return;
   }
   const std::size_t shown = std::min( most, at.before.size() );
   const std::size_t more = at.beforeThat + at.before.size() - shown;
   page.at( 3 ).add( "before that" );
   if ( more > 0 ) {
      page.add( ", after " + std::to_string( more ) + " more" );
   }
   page.end();
   for ( const Span & span : std::span( at.before ).last( shown ) ) {
      const std::string since = moment( span.since );
      page.at( wordColumn ).add( "since " + since ).at( wordColumn + beforeTime );
      page.add( admits( span.reason ) ? "admitted" : "held" ).at( sawColumn );
      page.add( wordsFor( span.reason ) ).end();
   }
}

void showGate( const AtGate & at, std::size_t mostBefore, Page & page ) {
   page.end();
   page.at( 3 ).add( nameOf( at.gate ) );
   if ( at.decision ) {
      if ( at.gate == Gate::egressAcl ) {
         page.add( " (" ).add( nameOf( at.decision->decider ) ).add( ")" );
      }
   }
   page.add( " " ).add( verdictText( at ) );
   if ( at.decision ) {
      const bool saidSo = at.decision->admitted() != at.admitted;
      page.add( ( saidSo ? " at " : ", decided at " ) + moment( at.decision->time ) );
   }
   page.end();
   if ( !at.because.empty() ) {
      page.at( 3 ).add( "because " ).add( at.because ).end();
   }
   showLooked( at, page );
   if ( !at.exchange.empty() ) {
      page.at( wordColumn )
         .add( "exchange with the peer" )
         .at( sawColumn )
         .add( at.exchange )
         .end();
   }
   page.at( 3 ).add( "is looked at again when" ).end();
   if ( at.deadline ) {
      page.at( wordColumn ).add( "the time-out comes, at " + moment( *at.deadline ) ).end();
   }
   for ( const std::string & change : at.again ) {
      page.at( wordColumn ).add( change ).end();
   }
   showBefore( at, mostBefore, page );
}

} // namespace

void showAsText( const Explanation & explanation, Replay::Writer & writer ) {
   Page page( writer );
   showHeadline( explanation, page );
   const auto above = std::span( explanation.remarks ).first( explanation.remarksAbove );
   for ( const std::string & remark : above ) {
      page.at( 3 ).add( remark ).end();
   }
   for ( const AtGate & at : explanation.gates ) {
      showGate( at, explanation.gates.size() > 1 ? beforeOfTwo : beforeOfOne, page );
   }
   const auto below = std::span( explanation.remarks ).subspan( explanation.remarksAbove );
   if ( !below.empty() ) {
      page.end();
   }
   for ( const std::string & remark : below ) {
      page.at( 3 ).add( remark ).end();
   }
   writer.flushIfFull();
}

} // namespace Explain
