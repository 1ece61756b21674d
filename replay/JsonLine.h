#pragma once

// One JSON object on a line of its own.

#include "platform/Vex/Seconds.h"
#include "replay/JsonText.h"
#include "replay/Numbers.h"
#include "replay/Writer.h"

#include <cstddef>
#include <string_view>

namespace Replay {

/// Begins with what the line tells of, when, and on which switch, if there are several. A line that
/// is not ended, because something was thrown, is taken back: a reader gets whole lines only.
/// Borrows the writer, which must not be used otherwise meanwhile.
class JsonLine {
 public:
   JsonLine( Writer & writer,
             std::string_view kind,
             Vex::Seconds time,
             std::string_view switchName = {} )
       : JsonLine( writer ) { // so that from here on the destructor runs
      json_.beginObject();
      add( "kind", kind ).add( "t", roundedToMicroseconds( time ) );
      if ( !switchName.empty() ) {
         add( "switch", switchName );
      }
   }
   JsonLine( const JsonLine & ) = delete;
   JsonLine & operator=( const JsonLine & ) = delete;
   JsonLine( JsonLine && ) = delete;
   JsonLine & operator=( JsonLine && ) = delete;
   ~JsonLine() {
      if ( !ended_ ) {
         writer_.buffer().erase( begin_ );
      }
   }

   /// `value` is anything that JsonText::value() takes.
   template < class Value >
   JsonLine & add( std::string_view key, const Value & value ) {
      json_.key( key );
      json_.value( value );
      return *this;
   }

   void end() {
      json_.endObject();
      writer_.buffer() += '\n';
      ended_ = true;
      writer_.flushIfFull();
   }

 private:
   explicit JsonLine( Writer & writer ) noexcept
       : writer_( writer ), begin_( writer.buffer().size() ), json_( writer.buffer() ) {}

   Writer & writer_;
   std::size_t begin_; // of the line, in the writer's buffer
   JsonText json_;
   bool ended_ = false;
};

} // namespace Replay
