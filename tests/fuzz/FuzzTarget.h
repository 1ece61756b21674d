#pragma once

// A fuzz target: one function that takes any bytes, and ends the process when something is wrong
// with what they lead to. Linked with libFuzzer it is fed bytes without end; linked with
// PlayCorpus.cpp it plays the files of its corpus, as every test run does.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>

// Its name is libFuzzer's; always returns 0.
extern "C" int LLVMFuzzerTestOneInput( const std::uint8_t * data, std::size_t size );

namespace Fuzz {

[[noreturn]] inline void fail( const std::string & what ) {
   std::fprintf( stderr, "fuzz: %s\n", what.c_str() );
   std::abort();
}

inline void require( bool holds, const char * what ) {
   if ( !holds ) {
      fail( what );
   }
}

/// The input as a supply of small numbers; when it has run out, zeros.
class Bytes {
 public:
   explicit Bytes( std::span< const std::uint8_t > bytes ) noexcept : bytes_( bytes ) {}

   bool more() const noexcept { return !bytes_.empty(); }
   std::uint8_t next() noexcept {
      if ( bytes_.empty() ) {
         return 0;
      }
      const std::uint8_t byte = bytes_.front();
      bytes_ = bytes_.subspan( 1 );
      return byte;
   }
   /// 0 to `limit` - 1; `limit` is 1 to 256.
   std::size_t below( std::size_t limit ) noexcept { return next() % limit; }
   bool coin() noexcept { return below( 2 ) != 0; }
   /// What is left.
   std::span< const std::uint8_t > rest() const noexcept { return bytes_; }

 private:
   std::span< const std::uint8_t > bytes_;
};

} // namespace Fuzz
