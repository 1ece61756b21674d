#pragma once

// A file on disk as memory: what is written to it is in the file from then on, whatever becomes of
// the process. All of its room on disk is taken when it is made, so that a full disk is an error
// then and never a signal later.
//
// A new file takes its path in two steps: it is made beside it under a name of its own, and
// publish() puts it in place, whole. While a file is in use its owner holds an exclusive lock on it
// (flock), which the kernel releases when the process ends, however it does.
//
// Ownership: whoever makes it holds it. The file stays on disk.
// Forked children inherit mapping and lock: see platform/Jotter/FlightRecorder.h.

#include "platform/Vex/String.h"

#include <cstddef>
#include <span>

namespace Jotter {

/// A file descriptor that is closed with its owner.
class OpenFile {
 public:
   OpenFile() noexcept = default;
   explicit OpenFile( int number ) noexcept : number_( number ) {}
   OpenFile( const OpenFile & ) = delete;
   OpenFile & operator=( const OpenFile & ) = delete;
   OpenFile( OpenFile && other ) noexcept;
   OpenFile & operator=( OpenFile && other ) noexcept;
   ~OpenFile() { close(); }

   explicit operator bool() const noexcept { return number_ >= 0; }
   int number() const noexcept { return number_; }
   void close() noexcept;

 private:
   int number_ = -1;
};

class MappedFile {
 public:
   /// Says what is wrong with a file that is in the place of a new one; empty: it may be moved
   /// away.
   using Judge = Vex::String ( * )( std::span< const std::byte > beginning );

   /// A file of `size` bytes, all zero, that is to become `path`. Throws TraceFileError, and leaves
   /// everything on disk as it was, when that cannot be: no such folder, no permission, no room,
   /// what is in its place is in use, no file, or not to the liking of `judge`.
   MappedFile( Vex::String path, std::size_t size, Judge judge );
   MappedFile( const MappedFile & ) = delete;
   MappedFile & operator=( const MappedFile & ) = delete;
   MappedFile( MappedFile && ) = delete;
   MappedFile & operator=( MappedFile && ) = delete;
   ~MappedFile();

   std::byte * data() const noexcept { return data_; }

   /// Gives the file its path; what was there becomes PATH.previous.
   void publish();

   /// Others may take the path from now on. The mapping stays.
   void unlock() noexcept;

 private:
   OpenFile lockedPredecessor( Judge judge ) const;
   void checkPrevious( Judge judge ) const;
   void create( std::size_t size );
   void map( std::size_t size );

   Vex::String path_;
   Vex::String temporary_; // its name until it is published
   OpenFile predecessor_; // what publish() moves away
   OpenFile file_;
   std::byte * data_ = nullptr;
   std::size_t size_ = 0;
};

} // namespace Jotter
