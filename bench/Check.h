#pragma once

// Proves that the implementations do the same job: the same random events give the same verdicts in
// all of them, and in this library and the floor also in the same order and with as many records.

#include "bench/World.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Bench {

enum class Step : std::uint8_t {
   inputIs,
   inputDel,
   memberIs,
   memberDel,
   passHalfOff,
   passHalfOn,
   passNoneOff,
   passNoneOn,
   settle
};

class AnyWorld {
 public:
   AnyWorld() = default;
   AnyWorld( const AnyWorld & ) = delete;
   AnyWorld & operator=( const AnyWorld & ) = delete;
   AnyWorld( AnyWorld && ) = delete;
   AnyWorld & operator=( AnyWorld && ) = delete;
   virtual ~AnyWorld() = default;

   /// `pair` matters to the first four.
   virtual void apply( Step step, std::size_t pair ) = 0;
   virtual Verdicts verdicts() const = 0;
   virtual std::uint64_t heard() const = 0;
   /// How many records the ring has got; 0 where that is not told.
   virtual std::uint64_t records() const = 0;
};

template < World W >
class AnyWorldOf final : public AnyWorld {
 public:
   explicit AnyWorldOf( const Shape & shape ) : world_( shape ) {
      world_.traceIs( true );
      world_.start();
   }
   AnyWorldOf( const AnyWorldOf & ) = delete;
   AnyWorldOf & operator=( const AnyWorldOf & ) = delete;
   AnyWorldOf( AnyWorldOf && ) = delete;
   AnyWorldOf & operator=( AnyWorldOf && ) = delete;
   ~AnyWorldOf() override { world_.stop(); }

   void apply( Step step, std::size_t pair ) override {
      switch ( step ) {
      case Step::inputIs:
         return world_.inputIs( world_.pair( pair ) );
      case Step::inputDel:
         return world_.inputDel( world_.pair( pair ) );
      case Step::memberIs:
         return world_.memberIs( world_.pair( pair ) );
      case Step::memberDel:
         return world_.memberDel( world_.pair( pair ) );
      case Step::passHalfOff:
         return world_.passHalf( false );
      case Step::passHalfOn:
         return world_.passHalf( true );
      case Step::passNoneOff:
         return world_.passNone( false );
      case Step::passNoneOn:
         return world_.passNone( true );
      case Step::settle:
         return world_.settle();
      }
   }
   Verdicts verdicts() const override { return world_.verdicts(); }
   std::uint64_t heard() const override { return world_.heard(); }
   std::uint64_t records() const override {
      if constexpr ( requires { world_.records(); } ) {
         return world_.records();
      } else {
         return 0;
      }
   }

 private:
   W world_;
};

struct Contestant {
   std::string_view interlock;
   std::string_view implementation;
   std::function< std::unique_ptr< AnyWorld >( const Shape & ) > make;
   bool traced = true; // it writes records, and tells how many
};

template < World W >
Contestant contestant( std::string_view interlock,
                       std::string_view implementation,
                       bool traced = true ) {
   return { interlock, implementation,
            []( const Shape & shape ) { return std::make_unique< AnyWorldOf< W > >( shape ); },
            traced };
}

/// Throws std::logic_error, which names the implementation, the seed and the step, when two differ.
/// All contestants are of one interlock; the first is the one that the others are held against.
void check( const std::vector< Contestant > & contestants, std::uint64_t seed );

} // namespace Bench
