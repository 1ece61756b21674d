#pragma once

// Terminals of a test's own, and programs that run at them.

#include <array>
#include <cerrno>
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <pty.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace TestSupport {

/// A variable of the environment that is as it was when this goes.
class Variable {
 public:
   /// nullptr: it is not set.
   Variable( const char * name, const char * value ) : name_( name ) {
      if ( const char * const before = std::getenv( name ) ) {
         before_ = before;
      }
      set( value );
   }
   Variable( const Variable & ) = delete;
   Variable & operator=( const Variable & ) = delete;
   Variable( Variable && ) = delete;
   Variable & operator=( Variable && ) = delete;
   ~Variable() { set( before_ ? before_->c_str() : nullptr ); }

 private:
   void set( const char * value ) const {
      if ( value != nullptr ) {
         setenv( name_, value, 1 );
      } else {
         unsetenv( name_ );
      }
   }

   const char * name_;
   std::optional< std::string > before_;
};

/// Hands out exactly what is written to it. Where the machine has none to give, as in a root folder
/// without /dev/pts, there is nothing at its descriptor: tests are WithTerminals.
class Terminal {
 public:
   explicit Terminal( unsigned short columns = 80 ) {
      const winsize size{ 24, columns, 0, 0 };
      if ( openpty( &master_, &descriptor_, nullptr, nullptr, &size ) != 0 ) {
         return;
      }
      termios settings{};
      tcgetattr( descriptor_, &settings );
      cfmakeraw( &settings );
      tcsetattr( descriptor_, TCSANOW, &settings );
   }
   Terminal( const Terminal & ) = delete;
   Terminal & operator=( const Terminal & ) = delete;
   Terminal( Terminal && ) = delete;
   Terminal & operator=( Terminal && ) = delete;
   ~Terminal() {
      hangUp();
      close( master_ );
   }

   int descriptor() const noexcept { return descriptor_; }

   /// What this process has written to it, a few kilobytes at most. It is of no more use.
   std::string takeText() {
      hangUp();
      return readAll();
   }

   /// Runs a program with standard output, and standard error, at this terminal; returns what it
   /// shows.
   std::string run( std::vector< std::string > command ) {
      const pid_t child = fork();
      EXPECT_GE( child, 0 );
      if ( child == 0 ) {
         dup2( descriptor_, STDOUT_FILENO );
         dup2( descriptor_, STDERR_FILENO );
         std::vector< char * > argv;
         argv.reserve( command.size() + 1 );
         for ( std::string & word : command ) {
            argv.push_back( word.data() );
         }
         argv.push_back( nullptr );
         execv( argv[ 0 ], argv.data() );
         _exit( 127 );
      }
      hangUp();
      std::string text = readAll();
      int status = 0;
      EXPECT_EQ( waitpid( child, &status, 0 ), child );
      EXPECT_TRUE( WIFEXITED( status ) );
      status_ = WEXITSTATUS( status );
      return text;
   }
   /// Of that program.
   int exitStatus() const noexcept { return status_; }

 private:
   // Until nobody can write any more, which reads as an error.
   std::string readAll() const {
      std::string text;
      std::array< char, 4096 > piece{};
      for ( ;; ) {
         const ssize_t size = read( master_, piece.data(), piece.size() );
         if ( size > 0 ) {
            text.append( piece.data(), static_cast< std::size_t >( size ) );
         } else if ( size == 0 || errno != EINTR ) {
            return text;
         }
      }
   }
   void hangUp() {
      if ( descriptor_ >= 0 ) {
         close( descriptor_ );
         descriptor_ = -1;
      }
   }

   int master_ = -1;
   int descriptor_ = -1;
   int status_ = -1;
};

/// Why a test is skipped.
inline constexpr const char * noTerminals = "this machine gives no pseudo terminals";

/// Tests that need terminals, and are skipped where there are none.
class WithTerminals : public ::testing::Test {
 protected:
   void SetUp() override {
      if ( Terminal().descriptor() < 0 ) {
         GTEST_SKIP() << noTerminals;
      }
   }
};

} // namespace TestSupport
