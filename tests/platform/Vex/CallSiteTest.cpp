#include "platform/Vex/CallSite.h"

#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

namespace {

using Vex::bareFunctionName;

TEST( BareFunctionNameTest, IsTheLastPartBeforeTheParameters ) {
   EXPECT_EQ( bareFunctionName( "int main()" ), "main" );
   EXPECT_EQ( bareFunctionName( "void Velo::Sm::handleMember(Nodo::IntfId, Nodo::IntfId)" ),
              "handleMember" );
   EXPECT_EQ( bareFunctionName( "virtual bool Velo::Sm::isActive() const" ), "isActive" );
}

TEST( BareFunctionNameTest, PointersAndReferencesOfTheResultAreNoPartOfIt ) {
   EXPECT_EQ( bareFunctionName( "const char* name()" ), "name" );
   EXPECT_EQ( bareFunctionName( "const char *name()" ), "name" );
   EXPECT_EQ( bareFunctionName( "Velo::Sm &Velo::Sm::self()" ), "self" );
   EXPECT_EQ( bareFunctionName( "Velo::Sm&& Velo::Sm::moved()" ), "moved" );
}

TEST( BareFunctionNameTest, ArgumentsOfTemplatesAreNoPartOfIt ) {
   EXPECT_EQ( bareFunctionName( "void Velo::Keyed<T, (int)3>::insert(T) [with T = A<int()>]" ),
              "insert" );
   EXPECT_EQ( bareFunctionName( "void Velo::Keyed<Nodo::IntfId>::insert(T) [T = Nodo::IntfId]" ),
              "insert" );
   EXPECT_EQ( bareFunctionName( "std::map<int, std::vector<int> > make(std::pair<int, int>)" ),
              "make" );
   EXPECT_EQ( bareFunctionName( "std::function<void(int)> maker()" ), "maker" );
}

TEST( BareFunctionNameTest, ConstructorsAndDestructorsHaveTheNameOfTheirClass ) {
   EXPECT_EQ( bareFunctionName( "Velo::Sm::Sm(int)" ), "Sm" );
   EXPECT_EQ( bareFunctionName( "virtual Velo::Sm::~Sm()" ), "~Sm" );
}

TEST( BareFunctionNameTest, FunctionsWithoutANamedSurroundingHaveTheirOwnName ) {
   EXPECT_EQ( bareFunctionName( "void {anonymous}::helper(int)" ), "helper" );
   EXPECT_EQ( bareFunctionName( "void (anonymous namespace)::helper(int)" ), "helper" );
   EXPECT_EQ( bareFunctionName( "void Velo::(anonymous namespace)::Sm::helper(int)" ), "helper" );
}

TEST( BareFunctionNameTest, WhatIsNoSignatureStaysAsItIs ) {
   EXPECT_EQ( bareFunctionName( "" ), "" );
   EXPECT_EQ( bareFunctionName( "main" ), "main" );
}

template < class T >
struct Keyed {
   static auto site() { return Vex::at< 1 >(); }
   template < class U >
   static auto innerSite( U /* argument */ ) {
      return Vex::at< 1 >();
   }
};

constexpr unsigned freeSiteLine = __LINE__ + 2;
auto freeSite() {
   return Vex::at< 3 >();
}

TEST( CallSiteTest, CarriesLevelLineAndFunctionOfTheCall ) {
   const auto site = freeSite();
   EXPECT_EQ( site.level, 3 );
   EXPECT_EQ( site.line, freeSiteLine );
   EXPECT_EQ( site.function, "freeSite" );
}

TEST( CallSiteTest, KnowsTheBareNameOfAMemberOfATemplate ) {
   EXPECT_EQ( Keyed< int >::site().function, "site" );
   EXPECT_EQ( Keyed< void ( * )( int ) >::innerSite( 'c' ).function, "innerSite" );
}

TEST( CallSiteTest, SitesOfOneLineDiffer ) {
   const auto sites = std::pair( Vex::at< 0 >(), Vex::at< 0 >() );
   EXPECT_EQ( sites.first.line, sites.second.line );
   EXPECT_FALSE( (std::is_same_v< decltype( sites.first ), decltype( sites.second ) >));
}

TEST( CallSiteTest, ASiteIsOneTypeHoweverOftenItIsReached ) {
   EXPECT_TRUE( (std::is_same_v< decltype( freeSite() ), decltype( freeSite() ) >));
}

} // namespace
