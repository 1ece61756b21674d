#pragma once

// Construction of a state machine from an array of arguments, for hosts that know it by name only:
//
//    const Vex::Argument arguments[] = { in, config, status, out };
//    Vex::Ptr< Vex::Object > sm = Vex::construct( "MlagEgressAclIntfInterlockSm", arguments );
//
// Errors: ConstructionError names the state machine, the position (from 1) and the type wanted;
// then nothing has been constructed. A null argument fits every position.

#include "platform/Vex/Export.h"
#include "platform/Vex/Object.h"
#include "platform/Vex/Ptr.h"
#include "platform/Vex/String.h"
#include "platform/Vex/Type.h"

#include <cstddef>
#include <functional>
#include <span>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vex {

/// The arguments do not fit; the text names the state machine, the position and the type wanted.
class VEX_EXPORT ConstructionError : public std::invalid_argument {
 public:
   explicit ConstructionError( const String & what ) : std::invalid_argument( what ) {}
   ConstructionError( const ConstructionError & ) = default;
   ConstructionError & operator=( const ConstructionError & ) = default;
   ConstructionError( ConstructionError && ) = default;
   ConstructionError & operator=( ConstructionError && ) = default;
   ~ConstructionError() override;
};

/// A kind of object, read-only or writable.
struct ParameterType {
   const Type * type;
   bool writable;
};

/// "Mlag::Status (read-only)".
VEX_EXPORT String describe( const ParameterType & parameter );

/// One argument: a reference to an object with the constness under which the host has it.
class Argument {
 public:
   Argument( std::nullptr_t ) noexcept {} // NOLINT(google-explicit-constructor): reads as a list
   template < class T >
   Argument( const Ptr< T > & object ) noexcept // NOLINT(google-explicit-constructor)
       : object_( object ), writable_( !std::is_const_v< T > ) {}

   const Ptr< const Object > & object() const noexcept { return object_; }
   bool writable() const noexcept { return writable_; }

 private:
   Ptr< const Object > object_;
   bool writable_ = true;
};

/// A state machine as the framework can construct it.
struct StateMachineType {
   String name;
   std::vector< ParameterType > parameters;
   std::function< Ptr< Object >( std::span< const Argument > ) > creator;
};

namespace Detail {

VEX_EXPORT void checkCount( const StateMachineType & type, std::size_t given );
[[noreturn]] VEX_EXPORT void refuse( const StateMachineType & type,
                                     std::size_t position,
                                     const Argument & given );

template < class P >
ParameterType parameterType() {
   using T = typename P::element_type;
   return { &std::remove_const_t< T >::staticFwkType(), !std::is_const_v< T > };
}

template < class P >
P convert( const StateMachineType & type, std::size_t position, const Argument & given ) {
   using T = typename P::element_type;
   if ( !given.object() ) {
      return nullptr;
   }
   const auto * const object = dynamic_cast< const T * >( given.object().get() );
   if ( object == nullptr || ( !std::is_const_v< T > && !given.writable() ) ) {
      refuse( type, position, given );
   }
   // Writable where T is not const: checked above.
   return P( const_cast< T * >( object ) ); // NOLINT(cppcoreguidelines-pro-type-const-cast)
}

} // namespace Detail

/// Describes a state machine by its creator, whose parameters are the arguments in order.
template < class Sm, class... Parameters >
StateMachineType stateMachineType( std::string_view name,
                                   Ptr< Sm > ( *creator )( Parameters... ) ) {
   StateMachineType type{ String( name ), { Detail::parameterType< Parameters >()... }, {} };
   type.creator = [ creator, checks = StateMachineType{ type.name, type.parameters, {} } ](
                     std::span< const Argument > arguments ) -> Ptr< Object > {
      Detail::checkCount( checks, arguments.size() );
      return [ & ]< std::size_t... at >( std::index_sequence< at... > ) {
         // Braces: the arguments are converted, and complained about, from first to last.
         std::tuple< Parameters... > converted{
            Detail::convert< Parameters >( checks, at, arguments[ at ] )... };
         return creator( std::move( std::get< at >( converted ) )... );
      }( std::index_sequence_for< Parameters... >() );
   };
   return type;
}

/// Constructs the state machine that a loaded module registered under `name`.
VEX_EXPORT Ptr< Object > construct( std::string_view name, std::span< const Argument > arguments );

} // namespace Vex
