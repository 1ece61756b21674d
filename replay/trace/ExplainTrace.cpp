#include "replay/trace/ExplainTrace.h"

#include "replay/Text.h"
#include "replay/explain/ExplainCommandLine.h"
#include "replay/explain/Explanation.h"
#include "replay/explain/Note.h"
#include "replay/explain/Story.h"
#include "replay/trace/Follower.h"

#include <string_view>

namespace TraceTool {

namespace {

void tell( Replay::Writer & err, std::string_view file, std::string_view what ) {
   std::string & line = err.buffer();
   line += "interlock-trace: ";
   Replay::appendPrintable( line, file );
   line += ": ";
   Replay::appendPrintable( line, what );
   line += '\n';
}

// What the whole records of the file tell, up to the time that is asked for.
Explain::Story storyIn( const Look & look, const Explain::Question & question ) {
   Explain::Story story;
   story.watch( question.pair );
   for ( const Jotter::Record & record : look.records ) {
      if ( question.at && record.time > *question.at ) {
         break;
      }
      story.take( Explain::noteOf( record ) );
   }
   return story;
}

ExitStatus answer( const Explain::Question & question,
                   Replay::Writer & out,
                   Replay::Writer & err ) {
   try {
      const Look look = Follower( question.file ).first( LastLook::yes );
      for ( const std::string & complaint : look.complaints ) {
         tell( err, question.file, complaint );
      }
      const Explain::Story story = storyIn( look, question );
      const bool beyond =
         question.at && !look.records.empty() && *question.at > look.records.back().time;
      const Explain::Answer found = explain( story, { question.pair,
                                                      Explain::Source::ring,
                                                      question.at.value_or( story.lastTime() ),
                                                      {},
                                                      beyond ? question.at : std::nullopt } );
      if ( !found.explanation ) {
         tell( err, question.file, found.error );
         return damaged;
      }
      if ( question.json ) {
         showAsJson( *found.explanation, out );
      } else {
         showAsText( *found.explanation, out );
      }
      return allRead;
   } catch ( const Unusable & error ) {
      tell( err, question.file, error.what() );
   }
   return unusable;
}

} // namespace

ExitStatus explainTrace( int argc,
                         const char * const * argv,
                         Replay::Writer & out,
                         Replay::Writer & err ) {
   const Explain::ExplainCommandLine commandLine =
      Explain::parseExplainCommandLine( Explain::Asks::traceFile, argc, argv );
   if ( commandLine.question ) {
      return answer( *commandLine.question, out, err );
   }
   out.buffer() += commandLine.text;
   if ( commandLine.error.empty() ) {
      return allRead;
   }
   err.buffer() += "interlock-trace: " + commandLine.error + '\n';
   return unusable;
}

} // namespace TraceTool
