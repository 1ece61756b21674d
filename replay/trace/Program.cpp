#include "replay/trace/Program.h"

#include "replay/Colours.h"
#include "replay/Text.h"
#include "replay/explain/ExplainCommandLine.h"
#include "replay/trace/CommandLine.h"
#include "replay/trace/ExplainTrace.h"
#include "replay/trace/Follower.h"

#include <algorithm>
#include <cerrno>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace TraceTool {

namespace {

class Printer {
 public:
   Printer( const Options & options, Replay::Writer & out, Replay::Writer & err )
       : options_( options ), out_( out ), err_( err ),
         colours_( Replay::wantsColours( options.colours, out.descriptor() ) ) {}

   ExitStatus print( const std::function< Waiting() > & startWaiting ) {
      try {
         const Waiting waiting = options_.follow ? startWaiting() : Waiting();
         Follower follower( options_.file );
         first( follower.first( options_.follow ? LastLook::no : LastLook::yes ) );
         while ( options_.follow && out_.error() == 0 && waiting() ) {
            next( follower.next() );
         }
      } catch ( const Unusable & error ) {
         tell( error.what() );
         return unusable;
      }
      return status_;
   }

 private:
   // Who reads a whole file finds at its end what was wrong with it.
   void first( Look look ) {
      const std::vector< std::string > unnamed = namesNobodyHas( look.records );
      std::erase_if( look.records, [ this ]( const Jotter::Record & record ) {
         return !matches( options_.filter, record );
      } );
      const std::size_t count = look.records.size();
      const std::size_t wanted = std::min< std::size_t >( options_.last.value_or( count ), count );
      showAll( std::span( look.records ).last( wanted ) );
      complain( look );
      for ( const std::string & intf : unnamed ) {
         tell( "no record names " + Replay::inQuotes( intf ) +
               ( options_.follow ? " so far" : "" ) );
      }
   }

   // Whoever asks for a name that is written otherwise would take silence for an answer. The other
   // conditions are let alone: it is the name that may be wrong.
   std::vector< std::string > namesNobodyHas( std::span< const Jotter::Record > records ) const {
      std::vector< std::string > names;
      for ( const std::string & intf : options_.filter.intfs ) {
         if ( std::ranges::none_of( records, [ &intf ]( const Jotter::Record & record ) {
                 return namesIntf( record, intf );
              } ) ) {
            names.push_back( intf );
         }
      }
      return names;
   }

   void next( const Look & look ) {
      complain( look );
      const std::span< const Jotter::Record > records( look.records );
      const std::size_t ofOldFile = look.newFile.value_or( records.size() );
      showAll( records.first( ofOldFile ) );
      if ( look.newFile ) {
         tell( "there is a new file of this name; its records follow" );
         showAll( records.subspan( ofOldFile ) );
      }
   }

   void showAll( std::span< const Jotter::Record > records ) {
      for ( const Jotter::Record & record : records ) {
         if ( matches( options_.filter, record ) ) {
            show( record, options_.output, colours_, out_ );
         }
         if ( out_.error() != 0 ) {
            return;
         }
      }
      out_.flush();
   }

   void complain( const Look & look ) {
      for ( const std::string & complaint : look.complaints ) {
         status_ = damaged;
         tell( complaint );
      }
   }

   void tell( std::string_view what ) {
      out_.flush(); // what came before is shown before
      std::string line = "interlock-trace: ";
      Replay::appendPrintable( line, options_.file );
      line += ": ";
      Replay::appendPrintable( line, what );
      line += '\n';
      err_.buffer() += line; // as a whole, or not at all
      err_.flush();
   }

   const Options & options_;
   Replay::Writer & out_;
   Replay::Writer & err_;
   bool colours_;
   ExitStatus status_ = allRead;
};

ExitStatus answer( const CommandLine & commandLine,
                   Replay::Writer & out,
                   Replay::Writer & err,
                   const std::function< Waiting() > & startWaiting ) {
   if ( commandLine.options ) {
      return Printer( *commandLine.options, out, err ).print( startWaiting );
   }
   out.buffer() += commandLine.text;
   if ( commandLine.error.empty() ) {
      return allRead;
   }
   err.buffer() += "interlock-trace: " + commandLine.error + '\n';
   return unusable;
}

} // namespace

ExitStatus run( int argc,
                const char * const * argv,
                Replay::Writer & out,
                Replay::Writer & err,
                const std::function< Waiting() > & startWaiting ) {
   const ExitStatus status = Explain::isExplain( argc, argv )
                                ? explainTrace( argc, argv, out, err )
                                : answer( parseCommandLine( argc, argv ), out, err, startWaiting );
   out.flush();
   // A reader who has seen enough is no error.
   if ( out.error() != 0 && out.error() != EPIPE ) {
      err.buffer() +=
         "interlock-trace: standard output: " + std::generic_category().message( out.error() ) +
         '\n';
      err.flush();
      return unusable;
   }
   err.flush();
   return status;
}

} // namespace TraceTool
