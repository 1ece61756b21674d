// A process is killed while it writes records as fast as it can: at any instant, many times, and
// once more after every single instruction.

#include "tests/platform/Jotter/Rings.h"
#include "tests/platform/Jotter/TraceFolder.h"
#include "tests/platform/Sanitized.h"
#include "tests/platform/Seed.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <new>
#include <random>
#include <sched.h>
#include <span>
#include <string>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Jotter::PieceKind;
using Nodo::IntfId;

// What the child tells: it outlives the child.
struct Progress {
   std::atomic< std::uint64_t > completed{ 0 }; // records
   std::atomic< bool > failed{ false };
};

class SharedProgress {
 public:
   SharedProgress()
       : page_( mmap( nullptr,
                      sizeof( Progress ),
                      PROT_READ | PROT_WRITE,
                      MAP_SHARED | MAP_ANONYMOUS,
                      -1,
                      0 ) ),
         progress_( new( page_ ) Progress ) {}
   SharedProgress( const SharedProgress & ) = delete;
   SharedProgress & operator=( const SharedProgress & ) = delete;
   SharedProgress( SharedProgress && ) = delete;
   SharedProgress & operator=( SharedProgress && ) = delete;
   ~SharedProgress() { munmap( page_, sizeof( Progress ) ); }

   Progress * operator->() const noexcept { return progress_; }

 private:
   void * page_;
   Progress * progress_;
};

// Record number n, from 1, is always the same, so that the parent knows what the child has written.
class Script {
 public:
   Script() {
      for ( std::size_t at = 0; at < 101; ++at ) {
         const std::size_t length = at % 4 == 0 ? 40 + at * 5 : at % 23;
         texts_.emplace_back( Vex::String( length, static_cast< char >( 'a' + at % 26 ) ) );
         const std::size_t size = 8 + length + ( length < 255 ? 1 : 3 );
         const std::size_t more = size > 32 ? ( size - 32 + 55 ) / 56 : 0;
         starts_.push_back( cycle_ );
         cycle_ += 1 + more;
      }
   }

   void write( Jotter::TraceFile & file, std::uint64_t record ) const {
      file.write( site_, record, " ", texts_[ record % texts_.size() ] );
   }
   Vex::String message( std::uint64_t record ) const {
      return std::to_string( record ) + " " + texts_[ record % texts_.size() ].stringValue();
   }
   // The first cell of a record; the one of the next is the end of this one.
   std::uint64_t start( std::uint64_t record ) const {
      return startInCycles( record ) - startInCycles( 1 );
   }

 private:
   std::uint64_t startInCycles( std::uint64_t record ) const {
      return record / texts_.size() * cycle_ + starts_[ record % texts_.size() ];
   }

   // Every file on disk that is made later knows it.
   Jotter::DescriptorId site_ = Jotter::registerDescriptor( describedBy(
      { placeholder( PieceKind::number ), literal( " " ), placeholder( PieceKind::text ) } ) );
   std::vector< IntfId > texts_;
   std::vector< std::uint64_t > starts_; // in a cycle of all texts
   std::uint64_t cycle_ = 0;
};

// Empty: the file is as it may be after a death with `completed` records reported. The record after
// those may be complete or under way.
std::string whatIsWrong( std::span< const std::byte > file,
                         const Script & script,
                         std::uint64_t completed ) {
   const Jotter::TraceFileContents contents = Jotter::readTraceFile( file );
   const std::uint64_t next = completed + 1;
   for ( const Vex::String & problem : contents.problems ) {
      const bool underWay =
         problem == "record " + std::to_string( next ) + " begun and not finished" ||
         problem.ends_with( " claimed and not written" );
      if ( contents.problems.size() > 1 || !underWay ) {
         return problem;
      }
   }
   std::uint64_t expected = contents.records.empty() ? next : contents.records.front().sequence;
   const std::uint64_t claimed = script.start( next + 1 );
   if ( expected > 1 && expected <= next && script.start( expected - 1 ) + 256 >= claimed ) {
      return "record " + std::to_string( expected - 1 ) + " is not there";
   }
   for ( const Jotter::Record & record : contents.records ) {
      if ( record.sequence != expected || record.message() != script.message( expected ) ) {
         return "record " + std::to_string( record.sequence ) + " is " + record.message();
      }
      ++expected;
   }
   if ( expected != next && expected != next + 1 ) {
      return "the last record is " + std::to_string( expected - 1 );
   }
   return contents.lastSequence + 1 == expected || contents.lastSequence == expected
             ? ""
             : "lastSequence is " + std::to_string( contents.lastSequence );
}

// --- at any instant ---

unsigned kills() {
   const char * const wanted = std::getenv( "INTERLOCK_KILLS" );
   return wanted != nullptr ? static_cast< unsigned >( std::strtoul( wanted, nullptr, 10 ) )
                            : 1'000U;
}

// What the process leaves behind is the same on any disk, and a disk in memory is the fastest.
std::filesystem::path inMemoryIfThereIs() {
   const char * const memory = "/dev/shm";
   return access( memory, W_OK | X_OK ) == 0 ? memory : std::filesystem::temp_directory_path();
}

[[noreturn]] void writeUntilKilled( const std::string & path,
                                    const Script & script,
                                    const SharedProgress & progress ) {
   try {
      Jotter::TraceFile file( path, Jotter::TraceFile::fewestBytes );
      for ( std::uint64_t record = 1;; ++record ) {
         script.write( file, record );
         progress->completed.store( record, std::memory_order_release );
      }
   } catch ( ... ) {
      progress->failed = true;
      _exit( 1 );
   }
}

TEST( KillTest, WhatWasWrittenIsThereWhereverTheWriterIsKilled ) {
   SCOPED_TRACE( seedNote( 41 ) );
   std::mt19937_64 random( seed( 41 ) );
   const TraceFolder folder( inMemoryIfThereIs() );
   const Script script;
   for ( unsigned round = 0; round < kills(); ++round ) {
      const SharedProgress progress;
      const std::uint64_t enough = random() % 2'000;
      std::uint64_t spins = random() % 2'000;
      const pid_t child = fork();
      ASSERT_GE( child, 0 );
      if ( child == 0 ) {
         writeUntilKilled( folder.path(), script, progress );
      }
      while ( progress->completed.load( std::memory_order_acquire ) <= enough &&
              !progress->failed ) {
         sched_yield();
      }
      for ( ; spins > 0; --spins ) {
         std::atomic_signal_fence( std::memory_order_seq_cst );
      }
      kill( child, SIGKILL );
      ASSERT_EQ( waitpid( child, nullptr, 0 ), child );
      ASSERT_FALSE( progress->failed );
      ASSERT_EQ( whatIsWrong( folder.bytes(), script, progress->completed ), "" )
         << "round " << round;
   }
}

// --- after every instruction ---

// A child that stops before it writes the records that are named; false where it may not be traced.
pid_t startStopped( Jotter::TraceFile & file,
                    const Script & script,
                    const SharedProgress & progress,
                    std::uint64_t records ) {
   const pid_t child = fork();
   if ( child == 0 ) {
      if ( ptrace( PTRACE_TRACEME, 0, nullptr, nullptr ) != 0 ) {
         _exit( 77 );
      }
      raise( SIGSTOP );
      for ( ; records > 0; --records ) {
         const std::uint64_t record = progress->completed + 1;
         script.write( file, record );
         progress->completed.store( record, std::memory_order_release );
      }
      _exit( 0 );
   }
   return child;
}

TEST( KillTest, WhatWasWrittenIsThereAfterEveryInstructionOfTheWriter ) {
   const TraceFolder folder;
   const Script script;
   const SharedProgress progress;
   Jotter::TraceFile file( folder.path(), Jotter::TraceFile::fewestBytes );
   // The ring has gone round, and some long records (each fourth) and short ones come next.
   while ( progress->completed < 403 ) {
      const std::uint64_t record = progress->completed + 1;
      script.write( file, record );
      progress->completed = record;
   }
   const std::uint64_t last = progress->completed + 6;
   const pid_t child = startStopped( file, script, progress, 6 );
   ASSERT_GT( child, 0 );
   int status = 0;
   ASSERT_EQ( waitpid( child, &status, 0 ), child );
   if ( WIFEXITED( status ) && WEXITSTATUS( status ) == 77 ) {
      GTEST_SKIP() << "no process may be traced here";
   }
   // Sanitized, these are far more instructions, and none of them others.
   const std::uint64_t stride = sanitized ? 97 : 1;
   std::uint64_t steps = 0;
   while ( WIFSTOPPED( status ) && progress->completed < last ) {
      if ( steps % stride == 0 ) {
         ASSERT_EQ( whatIsWrong( file.bytes(), script, progress->completed ), "" ) << steps;
      }
      ASSERT_EQ( ptrace( PTRACE_SINGLESTEP, child, nullptr, nullptr ), 0 ) << errno;
      ASSERT_EQ( waitpid( child, &status, 0 ), child );
      ++steps;
   }
   kill( child, SIGKILL );
   waitpid( child, nullptr, 0 );
   EXPECT_EQ( progress->completed, last );
   EXPECT_GT( steps, 1'000 );
   RecordProperty( "steps", std::to_string( steps ) );
}

// --- read by another process while it is written ---

TEST( KillTest, AnotherProcessReadsTheFileWhileItIsWritten ) {
   const TraceFolder folder;
   const Script script;
   const SharedProgress progress;
   Jotter::TraceFile file( folder.path(), Jotter::TraceFile::fewestBytes );
   const pid_t child = fork();
   ASSERT_GE( child, 0 );
   if ( child == 0 ) {
      for ( std::uint64_t record = 1; !progress->failed; ++record ) {
         script.write( file, record );
         progress->completed.store( record, std::memory_order_release );
      }
      _exit( 0 );
   }
   std::uint64_t last = 0;
   std::size_t seen = 0;
   std::string wrong;
   for ( int round = 0; ( round < 300 || seen < 2'000 || last < 2'000 ) && wrong.empty();
         ++round ) {
      const std::uint64_t completed = progress->completed.load( std::memory_order_acquire );
      const Jotter::TraceFileContents contents = Jotter::readTraceFile( file.bytes() );
      for ( const Vex::String & problem : contents.problems ) {
         // The writer may have been interrupted in the middle of its newest record.
         if ( !problem.ends_with( " begun and not finished" ) &&
              !problem.ends_with( " claimed and not written" ) ) {
            wrong = problem;
         }
      }
      std::uint64_t expected = contents.records.empty() ? 0 : contents.records.front().sequence;
      for ( const Jotter::Record & record : contents.records ) {
         if ( record.sequence != expected || record.message() != script.message( expected ) ) {
            wrong = std::to_string( record.sequence ) + " is " + record.message();
         }
         ++expected;
         ++seen;
      }
      if ( !contents.records.empty() &&
           ( expected <= completed || contents.lastSequence < last ) ) {
         wrong =
            std::to_string( completed ) + " was completed before " + std::to_string( expected );
      }
      last = std::max( last, contents.lastSequence );
   }
   progress->failed = true;
   waitpid( child, nullptr, 0 );
   EXPECT_EQ( wrong, "" );
}

} // namespace
