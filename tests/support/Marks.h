#pragma once

#include "platform/Vex/String.h"

#include <utility>

namespace TestSupport {

/// Marks in the order in which they were set, one blank between: one comparison shows count and
/// order.
class Marks {
 public:
   void add( const Vex::String & mark ) {
      if ( !text_.empty() ) {
         text_ += ' ';
      }
      text_ += mark;
   }

   /// All marks since the last time.
   Vex::String take() { return std::exchange( text_, {} ); }

 private:
   Vex::String text_;
};

} // namespace TestSupport
