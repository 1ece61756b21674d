// The built program, from outside.

#include "tests/replay/trace/TraceTool.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/wait.h>

namespace {

// The program with its standard output in a pipe.
class Started {
 public:
   explicit Started( const std::vector< std::string > & arguments ) {
      std::array< int, 2 > ends{};
      EXPECT_EQ( pipe( ends.data() ), 0 );
      std::vector< std::string > words = arguments;
      words.insert( words.begin(), INTERLOCK_TRACE );
      std::vector< char * > argv;
      for ( std::string & word : words ) {
         argv.push_back( word.data() );
      }
      argv.push_back( nullptr );
      process_ = fork();
      if ( process_ == 0 ) {
         dup2( ends[ 1 ], STDOUT_FILENO );
         close( ends[ 0 ] );
         close( ends[ 1 ] );
         execv( INTERLOCK_TRACE, argv.data() );
         _exit( 127 );
      }
      close( ends[ 1 ] );
      out_ = fdopen( ends[ 0 ], "r" );
   }
   Started( const Started & ) = delete;
   Started & operator=( const Started & ) = delete;
   Started( Started && ) = delete;
   Started & operator=( Started && ) = delete;
   ~Started() { closeOutput(); }

   // The next line, when it is there.
   std::string line() {
      std::array< char, 256 > text{};
      return std::fgets( text.data(), text.size(), out_ ) == nullptr ? "" : text.data();
   }
   void closeOutput() {
      if ( out_ != nullptr ) {
         static_cast< void >( std::fclose( out_ ) );
         out_ = nullptr;
      }
   }
   void send( int signal ) const { kill( process_, signal ); }
   // Waits for its end: the exit status, or the number of a signal, negative.
   int status() const {
      int status = 0;
      EXPECT_EQ( waitpid( process_, &status, 0 ), process_ );
      return WIFEXITED( status ) ? WEXITSTATUS( status ) : -WTERMSIG( status );
   }

 private:
   pid_t process_ = -1;
   std::FILE * out_ = nullptr;
};

class TraceProgramTest : public ::testing::Test {
 protected:
   void timeout() {
      agent.timeout();
      agent.save( file );
   }
   // In the test's folder; `arguments` as a shell takes them.
   int shell( const std::string & arguments ) const {
      const std::string command =
         "cd '" + ( folder / "" ) + "' && '" INTERLOCK_TRACE "' 2>err " + arguments;
      const int status = std::system( command.c_str() );
      EXPECT_TRUE( WIFEXITED( status ) ) << command;
      return WEXITSTATUS( status );
   }
   std::string read( const std::string & name ) const {
      const std::unique_ptr< std::FILE, int ( * )( std::FILE * ) > input(
         std::fopen( ( folder / name ).c_str(), "r" ), std::fclose );
      std::string text;
      for ( int c = std::fgetc( input.get() ); c != EOF; c = std::fgetc( input.get() ) ) {
         text += static_cast< char >( c );
      }
      return text;
   }

   TestSupport::TemporaryFolder folder;
   std::string file = folder / "trace";
   TestSupport::Agent agent;
};

TEST_F( TraceProgramTest, PrintsAFile ) {
   timeout();
   EXPECT_EQ( shell( "trace >out" ), 0 );
   EXPECT_EQ( read( "out" ),
              "    0.000       1  timeout                                         Velo/A:30 "
              "handleTimeout 4\n" );
   EXPECT_EQ( read( "err" ), "" );
}

TEST_F( TraceProgramTest, SaysWhatItCannotUse ) {
   EXPECT_EQ( shell( "trace >out" ), 2 );
   EXPECT_EQ( read( "err" ), "interlock-trace: trace: cannot be opened: No such file or directory; "
                             "wanted: a trace file\n" );
}

TEST_F( TraceProgramTest, AnswersHelpAndVersionOnStandardOutput ) {
   EXPECT_EQ( shell( "--version >out" ), 0 );
   EXPECT_EQ( read( "out" ), "interlock-trace " INTERLOCK_VERSION "\n" );
   EXPECT_EQ( shell( "--help >out" ), 0 );
   EXPECT_THAT( read( "out" ), ::testing::HasSubstr( "Usage: interlock-trace [OPTIONS] FILE\n" ) );
}

TEST_F( TraceProgramTest, SaysThatStandardOutputCannotBeWritten ) {
   timeout();
   EXPECT_EQ( shell( "trace >/dev/full" ), 2 );
   EXPECT_EQ( read( "err" ), "interlock-trace: standard output: No space left on device\n" );
   EXPECT_EQ( shell( "trace >&-" ), 2 );
   EXPECT_EQ( read( "err" ), "interlock-trace: standard output: Bad file descriptor\n" );
   EXPECT_EQ( shell( "--follow trace >&-" ), 2 );
}

TEST_F( TraceProgramTest, EndsQuietlyWhenItsReaderHasSeenEnough ) {
   for ( int i = 0; i < 200; ++i ) {
      agent.member( Vex::String( 1'000, 'x' ), "P" );
      agent.timeout();
   }
   agent.save( file );
   Started program( { file } );
   EXPECT_NE( program.line(), "" );
   program.closeOutput();
   EXPECT_EQ( program.status(), 0 );
}

TEST_F( TraceProgramTest, FollowsUntilItIsToldToEnd ) {
   TestSupport::Agent live( file );
   for ( const int signal : { SIGINT, SIGTERM } ) {
      live.timeout();
      Started program( { "--follow", "--last", "1", file } );
      const std::string first = program.line();
      EXPECT_THAT( first, ::testing::HasSubstr( "timeout" ) );
      live.timeout();
      EXPECT_EQ( TestSupport::sequences( program.line() ),
                 std::to_string( std::stoi( TestSupport::sequences( first ) ) + 1 ) );
      program.send( signal );
      EXPECT_EQ( program.status(), 0 );
      EXPECT_EQ( program.line(), "" );
   }
}

TEST_F( TraceProgramTest, FollowsUntilNobodyReadsItsOutput ) {
   timeout();
   Started program( { "--follow", file } );
   EXPECT_NE( program.line(), "" );
   program.closeOutput();
   EXPECT_EQ( program.status(), 0 );
}

} // namespace
