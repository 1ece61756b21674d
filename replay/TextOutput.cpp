#include "replay/TextOutput.h"

#include "platform/Vex/Clock.h"
#include "replay/Numbers.h"
#include "replay/RingText.h"
#include "replay/Text.h"

#include <algorithm>
#include <array>
#include <map>
#include <sstream>

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
constexpr std::size_t wrapColumn = 96; // of the closing lists
constexpr std::size_t mostListed = 24; // entries of a closing list

constexpr std::uint32_t level4 = 1U << 4U; // failures that an operator must see

class TextOutput final : public Output {
 public:
   using Output::Output;

   std::uint32_t levelsAlwaysShown() const noexcept override { return level4; }

   void begin( std::string_view file ) override {
      std::string & out = writer().buffer();
      if ( !firstScenario_ ) {
         out += '\n';
      }
      firstScenario_ = false;
      shownTime_.clear();
      appendPrintable( out, file );
      out += "\n\n   seconds     line\n";
   }

   void statement( std::size_t line, std::string_view text ) override {
      startLine();
      const std::string number = std::to_string( line );
      pad( number.size() < lineNumberWidth ? lineNumberWidth - number.size() : 0 );
      line_ += number;
      padTo( statementColumn );
      appendPrintable( line_, text );
      // Its result comes behind it. All others are shown before they run, which may take its time.
      open_ = text.starts_with( "expect " ) || text.starts_with( "\"expect\" " );
      if ( !open_ ) {
         endLine();
      }
   }

   void expectation( std::size_t /* line */, const Finding & finding ) override {
      padTo( resultColumn );
      line_ += finding.ok ? "ok" : "FAILED";
      endLine();
      if ( !finding.ok ) {
         startEvent( "found" );
         appendPrintable( line_, finding.instead );
         endLine();
      }
   }

   void sent( const Peering::Message & message, std::span< const Vex::Seconds > delays ) override {
      startEvent( "wire" );
      const std::size_t begin = columns( line_ );
      appendSwitch();
      line_ += message.content == Peering::Content::request ? "request " : "response ";
      appendName( message.lag );
      line_ += message.token ? " " + std::to_string( *message.token ) : " withdrawn";
      padTo( begin + subjectWidth + switchWidth() );
      line_ += delays.empty() ? "lost" : "arrives at";
      for ( const Vex::Seconds delay : delays ) {
         line_ += " " + decimal( Vex::Seconds( roundedToMicroseconds( Vex::now() + delay ) ) );
      }
      endLine();
   }

   void verdict( Interlock interlock, const Pair & pair, bool admitted ) override {
      startEvent( nameOf( interlock ) );
      const std::size_t begin = columns( line_ );
      appendSwitch();
      appendName( pair.member );
      line_ += " -> ";
      appendName( pair.lag );
      padTo( begin + subjectWidth + switchWidth() );
      line_ += admitted ? "admitted" : "held";
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
      appendMessage( line_, record.message );
      appendPrintable( line_, record.source );
      line_ += ':' + std::to_string( record.line ) + ' ';
      appendPrintable( line_, record.function );
      line_ += ' ' + std::to_string( record.level );
      endLine();
   }

   void ring( std::span< const Jotter::Record > records ) override {
      endOpenLine();
      line_ = "\n   ring buffer, oldest first: " + std::to_string( records.size() ) + " records";
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

   void pad( std::size_t blanks ) { line_.append( blanks, ' ' ); }
   // At least one blank.
   void padTo( std::size_t column ) {
      const std::size_t used = columns( line_ );
      pad( used < column ? column - used : 1 );
   }
   // The time, where it is another one than that of the line before.
   void startLine() {
      endOpenLine();
      std::string time = timeText( Vex::now() );
      if ( time != shownTime_ ) {
         line_ = time;
         shownTime_ = std::move( time );
      } else {
         pad( shownTime_.size() );
      }
   }
   void startEvent( std::string_view what ) {
      startLine();
      padTo( eventColumn );
      line_ += what;
      padTo( eventColumn + eventWidth );
   }
   void endLine() {
      line_.erase( line_.find_last_not_of( ' ' ) + 1 );
      writer().buffer() += line_;
      writer().buffer() += '\n';
      writer().flushIfFull();
      line_.clear();
      open_ = false;
   }
   void endOpenLine() {
      if ( open_ ) {
         endLine();
      }
   }

   void appendName( Nodo::IntfId intf ) {
      if ( intf == Nodo::IntfId() ) {
         line_ += "\"\"";
      } else {
         appendPrintable( line_, intf.stringValue() );
      }
   }
   void appendSwitch() {
      if ( !switchName().empty() ) {
         line_ += switchName();
         line_ += ": ";
      }
   }
   // What that takes, at most.
   std::size_t switchWidth() const noexcept {
      constexpr std::size_t width = 8;
      return switchName().empty() ? 0 : width;
   }
   void exchange( std::string_view what, Nodo::IntfId lag, std::optional< Token > token ) {
      startEvent( what );
      const std::size_t begin = columns( line_ );
      appendSwitch();
      appendName( lag );
      padTo( begin + subjectWidth + switchWidth() );
      line_ += token ? "token " + std::to_string( *token ) : "withdrawn";
      endLine();
   }

   // ---- The closing lines ----

   void closing( std::string_view what, std::span< const std::string > entries ) {
      line_ = "   ";
      line_ += what;
      constexpr std::size_t column = statementColumn + 4;
      padTo( column );
      for ( std::size_t at = 0; at < entries.size(); ++at ) {
         if ( at == mostListed ) {
            line_ += "and " + std::to_string( entries.size() - at ) + " more";
            break;
         }
         std::string entry;
         appendPrintable( entry, entries[ at ] );
         entry += at + 1 < entries.size() ? "," : "";
         if ( columns( line_ ) + columns( entry ) > wrapColumn && columns( line_ ) > column ) {
            endLine();
            pad( column );
         }
         line_ += entry + ' ';
      }
      endLine();
   }

   void standing( const SwitchOutcome & outcome ) {
      if ( !outcome.name.empty() ) {
         line_ = "   " + std::string( outcome.name );
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
      std::string text = std::to_string( outcome.held ) + " held";
      if ( !outcome.failedLines.empty() ) {
         text += ", " + std::to_string( outcome.failedLines.size() ) + " FAILED, first in line " +
                 std::to_string( outcome.failedLines.front() );
      }
      closing( "expects", std::array{ text } );
   }

   std::string line_; // under way
   std::string shownTime_;
   bool open_ = false;
   bool firstScenario_ = true;
};

} // namespace

std::unique_ptr< Output > textOutput( Writer & writer ) {
   return std::make_unique< TextOutput >( writer );
}

} // namespace Replay
