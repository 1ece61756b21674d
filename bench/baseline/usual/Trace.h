#pragma once

// The same records as the library's ring holds, through spdlog into its ring-buffer sink, with as
// many places as the library's ring has cells. The sink is the one without a lock, the faster
// choice.

#include "bench/baseline/usual/Intf.h"
#include "platform/Jotter/TraceFile.h"

#include <memory>
#include <spdlog/logger.h>
#include <spdlog/sinks/ringbuffer_sink.h>
#include <utility>

namespace Bench::Usual {

class Trace {
 public:
   Trace() : logger_( theLogger() ) {}

   /// Off: a test of the level is all that is left of a message.
   void onIs( bool on ) { logger_->set_level( on ? spdlog::level::trace : spdlog::level::off ); }

   template < class... Arguments >
   void entry( spdlog::format_string_t< Arguments... > text, Arguments &&... arguments ) const {
      log( spdlog::level::debug, text, std::forward< Arguments >( arguments )... );
   }
   template < class... Arguments >
   void decision( spdlog::format_string_t< Arguments... > text, Arguments &&... arguments ) const {
      log( spdlog::level::info, text, std::forward< Arguments >( arguments )... );
   }
   template < class... Arguments >
   void failure( spdlog::format_string_t< Arguments... > text, Arguments &&... arguments ) const {
      log( spdlog::level::err, text, std::forward< Arguments >( arguments )... );
   }

 private:
   // One for the process, as the library's ring is.
   static std::shared_ptr< spdlog::logger > theLogger() {
      static const auto logger = [] {
         auto made = std::make_shared< spdlog::logger >(
            "interlock", std::make_shared< spdlog::sinks::ringbuffer_sink_st >(
                            Jotter::TraceFile::defaultCells ) );
         made->set_level( spdlog::level::trace );
         return made;
      }();
      return logger;
   }

   template < class... Arguments >
   void log( spdlog::level::level_enum level,
             spdlog::format_string_t< Arguments... > text,
             Arguments &&... arguments ) const {
      if ( logger_->should_log( level ) ) {
         logger_->log( level, text, std::forward< Arguments >( arguments )... );
      }
   }

   std::shared_ptr< spdlog::logger > logger_;
};

} // namespace Bench::Usual
