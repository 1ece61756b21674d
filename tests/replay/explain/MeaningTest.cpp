// The table against the sources of the interlocks: every message that they write has its entry, and
// every entry is a message of theirs.

#include "replay/explain/Meaning.h"

#include "Velo/VeloMlagEgressAclIntfInterlockSm/MlagEgressAclIntfPeerInterlockSm.h"
#include "replay/explain/Story.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Explain::Gate;
using Explain::Meaning;
using Explain::Says;

static_assert( Explain::Story::patience == Velo::MlagEgressAclIntfPeerInterlockSm::delay );

// "egress-acl handleMember: lag member is active", with {} in the place of each argument.
std::string messageName( Gate gate, std::string_view function, std::string_view text ) {
   return std::string( nameOf( gate ) ) + ' ' + std::string( function ) + ": " +
          std::string( text );
}

// The arguments of a call: from behind its opening bracket to its closing one, split at commas that
// stand in no brackets and no text.
std::vector< std::string > argumentsAt( const std::string & source, std::size_t at ) {
   std::vector< std::string > arguments( 1 );
   bool inText = false;
   for ( int depth = 0;; ++at ) {
      const char c = source.at( at );
      if ( c == '"' ) {
         inText = !inText;
      } else if ( !inText && ( c == '(' || c == '{' || c == '[' ) ) {
         ++depth;
      } else if ( !inText && ( c == ')' || c == '}' || c == ']' ) && depth-- == 0 ) {
         return arguments;
      } else if ( !inText && c == ',' && depth == 0 ) {
         arguments.emplace_back();
         continue;
      }
      if ( inText || std::isspace( static_cast< unsigned char >( c ) ) == 0 ) {
         arguments.back() += c;
      }
   }
}

// What stands in the record of an argument of the call: a text, a name that goes into the text
// trace alone, or something that is known at run time only.
std::string pieceOf( const std::string & argument ) {
   if ( argument.front() == '"' ) {
      std::string text;
      for ( const char c : argument ) {
         text += c == '"' ? "" : std::string( 1, c );
      }
      return text;
   }
   return argument == "smName()" || argument == "smName_" || argument == "prefix" ? "" : "{}";
}

std::set< std::string > messagesIn( const std::filesystem::path & file, Gate gate ) {
   std::ifstream stream( file );
   const std::string source( std::istreambuf_iterator< char >( stream ), {} );
   std::set< std::string > messages;
   // A member function's definition, or a call.
   const std::regex place(
      R"(\n[A-Za-z][^\n;=]*::(\w+)\(|\b(?:duplog|trace)\( Vex::at< \d+ >\(\))" );
   std::string function;
   for ( std::sregex_iterator found( source.begin(), source.end(), place ), end; found != end;
         ++found ) {
      if ( ( *found )[ 1 ].matched ) {
         function = ( *found )[ 1 ];
         continue;
      }
      const auto open = static_cast< std::size_t >( found->position() ) + found->str().find( '(' );
      std::string text;
      const auto arguments = argumentsAt( source, open + 1 );
      for ( std::size_t at = 1; at < arguments.size(); ++at ) {
         text += pieceOf( arguments[ at ] );
      }
      messages.insert( messageName( gate, function, text ) );
   }
   return messages;
}

std::set< std::string > messagesOfTheInterlocks() {
   const std::filesystem::path velo = INTERLOCK_SOURCE_DIR "/Velo";
   std::set< std::string > all;
   for ( const auto & folder : std::filesystem::directory_iterator( velo ) ) {
      const auto gate = Explain::gateOfSource( "Velo/" + folder.path().filename().string() );
      if ( !folder.is_directory() ) {
         continue;
      }
      EXPECT_TRUE( gate ) << folder.path() << " writes under a name that is not known";
      for ( const auto & file : std::filesystem::directory_iterator( folder ) ) {
         all.merge( messagesIn( file.path(), gate.value_or( Gate::egressAcl ) ) );
      }
   }
   return all;
}

std::set< std::string > messagesOfTheTable() {
   std::set< std::string > all;
   for ( const Meaning & meaning : Explain::meanings() ) {
      EXPECT_TRUE(
         all.insert( messageName( meaning.gate, meaning.function, meaning.message ) ).second )
         << "twice: " << meaning.message;
   }
   return all;
}

std::size_t placeholdersIn( std::string_view message ) {
   std::size_t count = 0;
   for ( std::size_t at = message.find( "{}" ); at != std::string_view::npos;
         at = message.find( "{}", at + 2 ) ) {
      ++count;
   }
   return count;
}

TEST( Meaning, EveryMessageOfTheInterlocksHasItsEntryAndEveryEntryItsMessage ) {
   const auto written = messagesOfTheInterlocks();
   const auto known = messagesOfTheTable();
   EXPECT_GT( written.size(), 70U );
   std::vector< std::string > unknown;
   std::vector< std::string > gone;
   std::ranges::set_difference( written, known, std::back_inserter( unknown ) );
   std::ranges::set_difference( known, written, std::back_inserter( gone ) );
   EXPECT_THAT( unknown, ::testing::IsEmpty() ) << "written by an interlock, and not in the table";
   EXPECT_THAT( gone, ::testing::IsEmpty() ) << "in the table, and written by no interlock";
}

TEST( Meaning, EveryEntryNamesArgumentsThatItsMessageHas ) {
   for ( const Meaning & meaning : Explain::meanings() ) {
      const auto count = static_cast< int >( placeholdersIn( meaning.message ) );
      EXPECT_LT( meaning.member, count ) << meaning.message;
      EXPECT_LT( meaning.lag, count ) << meaning.message;
      for ( const Explain::Saw & saw : meaning.saws ) {
         EXPECT_EQ( saw.words.find( "{0}" ) != std::string_view::npos && count == 0, false )
            << saw.words;
      }
   }
}

TEST( Meaning, EveryEntryHasWhatItsKindNeeds ) {
   const std::set setOff{ Says::event,    Says::start,   Says::switchover,
                          Says::lagEvent, Says::timeout, Says::decides };
   for ( const Meaning & meaning : Explain::meanings() ) {
      EXPECT_EQ( setOff.contains( meaning.says ), !meaning.words.empty() ) << meaning.message;
      EXPECT_EQ( meaning.says == Says::verdict, meaning.reason.has_value() ) << meaning.message;
      EXPECT_TRUE( meaning.says != Says::check || !meaning.saws.empty() ) << meaning.message;
      EXPECT_TRUE( meaning.says != Says::decides || ( meaning.member >= 0 && meaning.lag >= 0 ) );
   }
}

TEST( Meaning, EveryReasonHasItsWords ) {
   std::set< std::string_view > names;
   std::set< std::string_view > words;
   for ( std::size_t at = 0; at < Explain::reasonCount; ++at ) {
      const auto reason = static_cast< Explain::Reason >( at );
      EXPECT_TRUE( names.insert( nameOf( reason ) ).second ) << nameOf( reason );
      EXPECT_TRUE( words.insert( wordsFor( reason ) ).second ) << wordsFor( reason );
      EXPECT_NE( nameOf( checkOf( reason ) ), "" );
   }
   EXPECT_FALSE( names.contains( "" ) );
}

TEST( Meaning, IsFoundForAMessageAsItWasWritten ) {
   const auto read = Explain::readMessage(
      Gate::egressAcl, "handleMember",
      "MlagEgressAclIntfPeerInterlockSm::handleMember memberIntf : Ethernet1 lag : PortChannel10" );
   ASSERT_NE( read.meaning, nullptr );
   EXPECT_EQ( read.meaning->says, Says::decides );
   EXPECT_THAT( read.arguments, ::testing::ElementsAre( "Ethernet1", "PortChannel10" ) );
}

TEST( Meaning, IsFoundWithEmptyNamesAndWithoutSpeaker ) {
   const auto read =
      Explain::readMessage( Gate::egressAcl, "handleMember", "handleMember memberIntf :  lag : " );
   ASSERT_NE( read.meaning, nullptr );
   EXPECT_THAT( read.arguments, ::testing::ElementsAre( "", "" ) );
}

TEST( Meaning, IsNotFoundForAnotherTextOrAnotherHandler ) {
   for ( const char * text : { "handleMember memberIntf : Ethernet1", "handleMember memberIntf : ",
                               "", "lag member is active!", "a lag member is active" } ) {
      EXPECT_EQ( Explain::readMessage( Gate::egressAcl, "handleMember", text ).meaning, nullptr )
         << text;
   }
   EXPECT_EQ( Explain::readMessage( Gate::egressAcl, "handleLag", "doCleanup" ).meaning, nullptr );
   EXPECT_EQ( Explain::readMessage( Gate::vlanXlate, "doCleanup", "doCleanup" ).meaning, nullptr );
   EXPECT_FALSE( Explain::gateOfSource( "Velo/Another" ) );
}

TEST( Meaning, WordsTakeTheirArguments ) {
   const std::vector< std::string > arguments{ "Ethernet1", "{0}" };
   EXPECT_EQ( Explain::filled( "{0} in {1}, {2}, {", arguments ), "Ethernet1 in {0}, {2}, {" );
}

} // namespace
