#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace Replay {

/// Writes text to a file descriptor, which it borrows, in large pieces. An error is remembered, not
/// thrown: whoever writes may be in the middle of a notification.
class Writer {
 public:
   explicit Writer( int descriptor ) : descriptor_( descriptor ) {}
   Writer( const Writer & ) = delete;
   Writer & operator=( const Writer & ) = delete;
   Writer( Writer && ) = delete;
   Writer & operator=( Writer && ) = delete;
   ~Writer() { flush(); }

   /// Text appended here is written with the next flush.
   std::string & buffer() noexcept { return buffer_; }
   /// To be called now and then: writes when there is enough.
   void flushIfFull() {
      if ( buffer_.size() >= full ) {
         flush();
      }
   }
   void flush() noexcept;

   /// Called whenever something is about to be written: makes room for it where it is shown.
   void beforeWritingIs( std::function< void() > makeRoom ) { makeRoom_ = std::move( makeRoom ); }

   /// What it writes to.
   int descriptor() const noexcept { return descriptor_; }

   /// The system's number of the first error; 0: none. After an error all text is dropped.
   int error() const noexcept { return error_; }

 private:
   static constexpr std::size_t full = std::size_t{ 64 } * 1024;

   int descriptor_;
   int error_ = 0;
   std::string buffer_;
   std::function< void() > makeRoom_;
};

} // namespace Replay
