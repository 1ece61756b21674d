#include "replay/TextOutput.h"

#include "platform/Vex/Clock.h"
#include "replay/Colours.h"
#include "replay/Numbers.h"
#include "replay/RingText.h"
#include "replay/Text.h"

#include <algorithm>

namespace Replay {

namespace {

// Columns: the time, right-aligned at its point; the line of the statement; the statement; and,
// further in, what came of it: a word that says what it is, and the rest.
constexpr std::size_t lineNumberWidth = 5;
constexpr std::size_t statementColumn = 19;
constexpr std::size_t eventColumn = statementColumn + 3;
constexpr std::size_t eventWidth = 12;
constexpr std::size_t resultColumn = 76; // of an expect
constexpr std::size_t subjectWidth = 32; // of a verdict, before the verdict
constexpr std::size_t closingColumn = 23; // of the entries of the closing lists
constexpr std::size_t wrapColumn = 96; // of the closing lists
constexpr std::size_t mostListed = 24; // entries of a closing list

constexpr std::uint32_t level4 = 1U << 4U; // failures that an operator must see

class TextOutput final : public Output {
 public:
   TextOutput( Writer & writer, bool colours ) : Output( writer ), colours_( colours ) {}

   std::uint32_t levelsAlwaysShown() const noexcept override { return level4; }

   void begin( std::string_view file ) override {
      std::string heading;
      appendPrintable( heading, file );
      startWith( firstScenario_ ? "" : "\n" );
      firstScenario_ = false;
      time_.clear();
      shownTime_.clear();
      line_.append( Tone::heading, heading );
      text() += "\n\n";
      line_.append( Tone::aside, "   seconds     line" );
      endLine();
   }

   void statement( std::size_t line, std::string_view text ) override {
      startLine();
      const std::string number = std::to_string( line );
      pad( number.size() < lineNumberWidth ? lineNumberWidth - number.size() : 0 );
      line_.append( Tone::aside, number );
      padTo( statementColumn );
      appendPrintable( this->text(), text );
      // Its result comes behind it. All others are shown before they run, which may take its time.
      open_ = text.starts_with( "expect " ) || text.starts_with( "\"expect\" " );
      if ( !open_ ) {
         endLine();
      }
   }

   void expectation( std::size_t /* line */, const Finding & finding ) override {
      padTo( resultColumn );
      line_.append( finding.ok ? Tone::good : Tone::bad, finding.ok ? "ok" : "FAILED" );
      endLine();
      if ( !finding.ok ) {
         startEvent( "found" );
         appendPrintable( text(), finding.instead );
         endLine();
      }
   }

   void sent( const Peering::Message & message, std::span< const Vex::Seconds > delays ) override {
      startEvent( "wire" );
      const std::size_t begin = columns( text() );
      appendSwitch();
      text() += message.content == Peering::Content::request ? "request " : "response ";
      appendName( message.lag );
      text() += message.token ? " " + std::to_string( *message.token ) : " withdrawn";
      padTo( begin + subjectWidth + switchWidth() );
      if ( delays.empty() ) {
         line_.append( Tone::waiting, "lost" );
      } else {
         text() += "arrives at";
      }
      for ( const Vex::Seconds delay : delays ) {
         text() += " " + decimal( Vex::Seconds( roundedToMicroseconds( Vex::now() + delay ) ) );
      }
      endLine();
   }

   void verdict( Interlock interlock, const Pair & pair, bool admitted ) override {
      startEvent( nameOf( interlock ) );
      const std::size_t begin = columns( text() );
      appendSwitch();
      appendName( pair.member );
      text() += " -> ";
      appendName( pair.lag );
      padTo( begin + subjectWidth + switchWidth() );
      line_.append( admitted ? Tone::good : Tone::waiting, admitted ? "admitted" : "held" );
      endLine();
   }

   void request( Nodo::IntfId lag, std::optional< Token > token ) override {
      exchange( "request", lag, token );
   }
   void response( Nodo::IntfId lag, std::optional< Token > token ) override {
      exchange( "response", lag, token );
   }

   void trace( const Vex::TraceRecord & record ) override {
      startEvent( "trace" );
      appendTrace( line_, record.message,
                   Origin{ record.source, record.line, record.function, record.level } );
      endLine();
   }

   void ring( std::span< const Jotter::Record > records ) override {
      endOpenLine();
      startWith( "\n   ring buffer, oldest first: " + std::to_string( records.size() ) +
                 " records" );
      endLine();
      for ( const Jotter::Record & record : records ) {
         line_ = ringLine( record );
         endLine();
      }
   }

   void end( const Outcome & outcome ) override {
      endOpenLine();
      writer().buffer() += '\n';
      for ( const SwitchOutcome & one : outcome.switches ) {
         standing( one );
      }
      expects( outcome );
   }

 private:
   // ---- Lines ----

   std::string & text() noexcept { return line_.text; }
   void pad( std::size_t blanks ) { text().append( blanks, ' ' ); }
   // At least one blank.
   void padTo( std::size_t column ) {
      const std::size_t used = columns( text() );
      pad( used < column ? column - used : 1 );
   }
   // Nothing of what found no memory on its way is left.
   void startWith( std::string_view words ) {
      line_.clear();
      text() = words;
   }
   // The time, where it is another one than that of the line before.
   void startLine() {
      endOpenLine();
      startWith( "" );
      time_ = timeText( Vex::now() );
      if ( time_ != shownTime_ ) {
         line_.append( Tone::time, time_ );
      } else {
         pad( shownTime_.size() );
      }
   }
   void startEvent( std::string_view what ) {
      startLine();
      padTo( eventColumn );
      text() += what;
      padTo( eventColumn + eventWidth );
   }
   void endLine() {
      open_ = false;
      text().erase( text().find_last_not_of( ' ' ) + 1 );
      writer().buffer() += ( colours_ ? line_.coloured() : text() ) + '\n'; // whole, or not at all
      writer().flushIfFull();
      line_.clear();
      if ( !time_.empty() ) {
         shownTime_ = std::move( time_ );
         time_.clear();
      }
   }
   void endOpenLine() {
      if ( open_ ) {
         endLine();
      }
   }

   void appendName( Nodo::IntfId intf ) {
      if ( intf == Nodo::IntfId() ) {
         text() += "\"\"";
      } else {
         appendPrintable( text(), intf.stringValue() );
      }
   }
   void appendSwitch() {
      if ( !switchName().empty() ) {
         text() += switchName();
         text() += ": ";
      }
   }
   // What that takes, at most.
   std::size_t switchWidth() const noexcept {
      constexpr std::size_t width = 8;
      return switchName().empty() ? 0 : width;
   }
   void exchange( std::string_view what, Nodo::IntfId lag, std::optional< Token > token ) {
      startEvent( what );
      const std::size_t begin = columns( text() );
      appendSwitch();
      appendName( lag );
      padTo( begin + subjectWidth + switchWidth() );
      text() += token ? "token " + std::to_string( *token ) : "withdrawn";
      endLine();
   }

   // ---- The closing lines ----

   void startClosing( std::string_view what ) {
      startWith( "   " );
      text() += what;
      padTo( closingColumn );
   }
   void closing( std::string_view what, std::span< const std::string > entries ) {
      startClosing( what );
      for ( std::size_t at = 0; at < entries.size(); ++at ) {
         if ( at == mostListed ) {
            text() += "and " + std::to_string( entries.size() - at ) + " more";
            break;
         }
         std::string entry;
         appendPrintable( entry, entries[ at ] );
         entry += at + 1 < entries.size() ? "," : "";
         if ( columns( text() ) + columns( entry ) > wrapColumn &&
              columns( text() ) > closingColumn ) {
            endLine();
            pad( closingColumn );
         }
         text() += entry + ' ';
      }
      endLine();
   }

   void standing( const SwitchOutcome & outcome ) {
      if ( !outcome.name.empty() ) {
         startWith( "   " + std::string( outcome.name ) );
         endLine();
      }
      admitted( Interlock::egressAcl, outcome.egressAcl );
      admitted( Interlock::vlanXlate, outcome.vlanXlate );
      std::vector< std::string > requests;
      requests.reserve( outcome.requests.size() );
      for ( const auto & [ lag, token ] : outcome.requests ) {
         requests.push_back( lag.stringValue() + " token " + std::to_string( token ) );
      }
      if ( !requests.empty() ) {
         closing( "requests out", requests );
      }
   }

   void admitted( Interlock interlock, const std::vector< Pair > & pairs ) {
      if ( pairs.empty() && interlock == Interlock::vlanXlate ) {
         return;
      }
      std::vector< Pair > sorted = pairs;
      std::ranges::sort( sorted, []( const Pair & a, const Pair & b ) {
         return a.lag != b.lag ? a.lag < b.lag : a.member < b.member;
      } );
      std::vector< std::string > entries;
      entries.reserve( sorted.size() );
      for ( const Pair & pair : sorted ) {
         entries.push_back( pair.member.stringValue() + " -> " + pair.lag.stringValue() );
      }
      if ( entries.empty() ) {
         entries.emplace_back( "nobody" );
      }
      closing( std::string( nameOf( interlock ) ) + " admits", entries );
   }

   void expects( const Outcome & outcome ) {
      if ( outcome.held == 0 && outcome.failedLines.empty() ) {
         return;
      }
      startClosing( "expects" );
      line_.append( Tone::good, std::to_string( outcome.held ) + " held" );
      if ( !outcome.failedLines.empty() ) {
         text() += ", ";
         line_.append( Tone::bad, std::to_string( outcome.failedLines.size() ) + " FAILED" );
         text() += ", first in line " + std::to_string( outcome.failedLines.front() );
      }
      endLine();
   }

   bool colours_;
   Line line_; // under way
   std::string time_; // of the line under way, where it has one
   std::string shownTime_; // of the last line that has one
   bool open_ = false;
   bool firstScenario_ = true;
};

} // namespace

std::unique_ptr< Output > textOutput( Writer & writer ) {
   return std::make_unique< TextOutput >( writer, false );
}

std::unique_ptr< Output > colouredTextOutput( Writer & writer ) {
   return std::make_unique< TextOutput >( writer, true );
}

} // namespace Replay
