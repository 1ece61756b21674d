#include "platform/Vex/Enum.h"

#include "platform/Vex/Module.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <string>

namespace {

enum class Fruit : std::uint8_t { apple = 1, pear = 2, quince = 200 };
enum class Signed : std::int8_t { low = -128, none = 0 };
enum class Plain : std::uint8_t {};

} // namespace

template <>
struct Vex::EnumNames< Fruit > {
   static constexpr std::string_view type = "Test::Fruit";
   static constexpr std::array entries{ Vex::EnumEntry{ 1, "apple" }, Vex::EnumEntry{ 2, "pear" },
                                        Vex::EnumEntry{ 200, "quince" } };
};

template <>
struct Vex::EnumNames< Signed > {
   static constexpr std::string_view type = "Test::Signed";
   static constexpr std::array entries{ Vex::EnumEntry{ -128, "low" },
                                        Vex::EnumEntry{ 0, "none" } };
};

namespace {

std::string streamed( Vex::NamedEnum auto value ) {
   std::ostringstream out;
   Vex::streamEnum( out, value );
   return out.str();
}

TEST( EnumTest, AValueHasItsName ) {
   EXPECT_EQ( Vex::enumName( Fruit::apple ), "apple" );
   EXPECT_EQ( Vex::enumName( Fruit::quince ), "quince" );
   EXPECT_EQ( Vex::enumName( Signed::low ), "low" );
}

TEST( EnumTest, AValueWithoutANameHasAnEmptyOne ) {
   EXPECT_EQ( Vex::enumName( static_cast< Fruit >( 3 ) ), "" );
}

TEST( EnumTest, ANameHasItsValue ) {
   EXPECT_EQ( Vex::enumValue< Fruit >( "pear" ), Fruit::pear );
   EXPECT_EQ( Vex::enumValue< Fruit >( "quince" ), Fruit::quince );
   EXPECT_EQ( Vex::enumValue< Signed >( "low" ), Signed::low );
}

TEST( EnumTest, AnUnknownNameHasNoValue ) {
   EXPECT_EQ( Vex::enumValue< Fruit >( "Pear" ), std::nullopt );
   EXPECT_EQ( Vex::enumValue< Fruit >( "pea" ), std::nullopt );
   EXPECT_EQ( Vex::enumValue< Fruit >( "" ), std::nullopt );
}

TEST( EnumTest, StreamsTheNameAndTheNumberOfAnUnknownValue ) {
   EXPECT_EQ( streamed( Fruit::pear ), "pear" );
   EXPECT_EQ( streamed( static_cast< Fruit >( 65 ) ), "65" ); // no character
   EXPECT_EQ( streamed( static_cast< Signed >( -1 ) ), "-1" );
}

TEST( EnumTest, ATypeIsFoundByItsNameWhileAModuleListsIt ) {
   EXPECT_EQ( Vex::enumType( "Test::Fruit" ), nullptr );
   {
      const Vex::Module module( "EnumTestModule", {},
                                { &Vex::enumTypeOf< Fruit >, &Vex::enumTypeOf< Signed > } );
      const Vex::EnumType * const type = Vex::enumType( "Test::Signed" );
      ASSERT_NE( type, nullptr );
      EXPECT_EQ( type->name, "Test::Signed" );
      EXPECT_EQ( type->nameOf( -128 ), "low" );
      EXPECT_EQ( type->nameOf( 128 ), "" );
      EXPECT_EQ( type->valueOf( "none" ), 0 );
      EXPECT_EQ( type->valueOf( "high" ), std::nullopt );
      EXPECT_NE( Vex::enumType( "Test::Fruit" ), nullptr );
      EXPECT_EQ( Vex::enumType( "Test::Fru" ), nullptr );
   }
   EXPECT_EQ( Vex::enumType( "Test::Fruit" ), nullptr );
}

TEST( EnumTest, OnlyAnEnumWithATableIsANamedOne ) {
   EXPECT_TRUE( Vex::NamedEnum< Fruit > );
   EXPECT_FALSE( Vex::NamedEnum< Plain > );
   EXPECT_FALSE( Vex::NamedEnum< int > );
}

} // namespace
