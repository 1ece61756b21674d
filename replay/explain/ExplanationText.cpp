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
// At least; a longer time moves what stands behind it, of all the lines alike.
constexpr std::size_t beforeTime = 18;
constexpr std::size_t beforeGap = 2; // behind the longest one
constexpr std::size_t beforeVerdict = 12;
// A line that is longer is broken at a blank; one without blanks, as a name may be, stays whole.
constexpr std::size_t lineWidth = 100;
constexpr std::size_t deeper = 3; // what continues a line, unless it continues a cell
constexpr std::size_t deepest = 60; // columns that a continued cell is moved, at most
// How many spans before the current one there is room for, on one screen.
constexpr std::size_t beforeOfOne = 4;
constexpr std::size_t beforeOfTwo = 1; // each

class Page {
 public:
   explicit Page( Replay::Writer & writer ) noexcept : writer_( writer ) {}

   /// What follows is a cell, at this column where there is room.
   Page & at( std::size_t column ) {
      const std::size_t used = Replay::columns( line_ );
      const bool isFirst = line_.empty();
      line_.append( used < column ? column - used : 1, ' ' );
      cell_ = line_.size();
      indent_ = isFirst ? column + deeper : std::min( Replay::columns( line_ ), deepest );
      return *this;
   }
   Page & add( std::string_view text ) {
      Replay::appendPrintable( line_, text );
      return *this;
   }
   /// The rest of the line, which is not broken; it may stand on a line of its own.
   void endWhole( std::string_view text ) {
      const std::size_t before = line_.size();
      add( "  " ).add( text );
      whole_ = line_.size() - before;
      end();
   }
   void end() {
      std::string & out = writer_.buffer();
      std::string_view rest = line_;
      std::size_t from = cell_;
      std::size_t used = Replay::columns( rest.substr( 0, from ) );
      for ( ;; ) {
         const std::size_t at = breakIn( rest, from, used, rest.size() - whole_ );
         const std::size_t next = rest.find_first_not_of( ' ', at );
         if ( next == std::string_view::npos ) {
            break;
         }
         out += rest.substr( 0, at );
         out += '\n';
         out.append( indent_, ' ' );
         rest.remove_prefix( next );
         from = 0;
         used = indent_;
      }
      out += rest;
      out += '\n';
      line_.clear();
      whole_ = 0;
      cell_ = 0;
      indent_ = 2 * deeper;
   }

 private:
   // "1.5 s" stays together.
   static bool isBeforeUnit( std::string_view text, std::size_t at ) noexcept {
      const char before = text[ at - 1 ];
      return '0' <= before && before <= '9' && text.substr( at ).starts_with( " s" );
   }
   // The blank that ends the line, if there is no room for all of it: not before `from`, which has
   // `used` columns in front of it, nor behind `last`.
   static std::size_t breakIn( std::string_view text,
                               std::size_t from,
                               std::size_t used,
                               std::size_t last ) {
      std::size_t blank = std::string_view::npos;
      for ( std::size_t at = from; at < text.size(); ++used ) {
         const bool ends = at > from && at <= last && text[ at ] == ' ' && text[ at - 1 ] != ' ' &&
                           !isBeforeUnit( text, at );
         if ( ends && ( used <= lineWidth || blank == std::string_view::npos ) ) {
            blank = at;
         }
         if ( used >= lineWidth && blank != std::string_view::npos ) {
            return blank;
         }
         at += Replay::firstCharacter( text.substr( at ) ).length;
      }
      return std::string_view::npos;
   }

   Replay::Writer & writer_;
   std::string line_;
   std::size_t whole_ = 0; // of its end, so many bytes are not broken
   std::size_t cell_ = 0; // where the last cell begins, in bytes; only that is broken
   std::size_t indent_ = 2 * deeper; // of what continues it
};

std::string nameShown( const std::string & name ) {
   return name.empty() ? "\"\"" : name;
}

std::string sinceText( const AtGate & at ) {
   return at.since ? " since " + moment( *at.since ) + ( at.orEarlier ? " or earlier" : "" )
                   : std::string( ", which has not looked at it" );
}

// Of those that hold, or of all that admit, in the order of the gates.
void showHeadline( const Explanation & known, Page & page ) {
   const Asked & asked = known.asked;
   const std::string on = asked.switchName.empty() ? "" : " on " + std::string( asked.switchName );
   page.add( nameShown( asked.pair.member ) );
   std::string_view by = ", by ";
   if ( known.isMember == false ) { // it is out of the LAG, whatever the interlocks say
      page.add( " is NO MEMBER of " ).add( nameShown( asked.pair.lag ) ).add( on );
      by = known.admitted ? ": admitted by " : ": held by ";
   } else {
      page.add( " in " ).add( nameShown( asked.pair.lag ) ).add( on );
      page.add( known.admitted ? " is ADMITTED" : " is HELD" );
   }
   page.add( " at " ).add( moment( asked.at ) );
   bool first = true;
   for ( const AtGate & at : known.gates ) {
      if ( at.admitted == known.admitted ) {
         page.add( first ? by : " and by " ).add( nameOf( at.gate ) );
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
         page.endWhole( "<- " + verdictText( at ) );
      } else {
         page.end();
      }
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
   const auto spans = std::span( at.before ).last( shown );
   const auto since = []( const Span & span ) { return "since " + moment( span.since ); };
   std::size_t widest = beforeTime - beforeGap;
   for ( const Span & span : spans ) {
      widest = std::max( widest, since( span ).size() );
   }
   const std::size_t verdictColumn = wordColumn + widest + beforeGap;
   for ( const Span & span : spans ) {
      page.at( wordColumn ).add( since( span ) ).at( verdictColumn );
      page.add( admits( span.reason ) ? "admitted" : "held" ).at( verdictColumn + beforeVerdict );
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
