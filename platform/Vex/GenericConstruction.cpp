#include "platform/Vex/GenericConstruction.h"

#include "platform/Vex/Module.h"

namespace Vex {

ConstructionError::~ConstructionError() = default;

String describe( const ParameterType & parameter ) {
   return String( parameter.type->name ) + ( parameter.writable ? " (writable)" : " (read-only)" );
}

namespace Detail {

void checkCount( const StateMachineType & type, std::size_t given ) {
   const std::size_t wanted = type.parameters.size();
   if ( given == wanted ) {
      return;
   }
   const String counts =
      std::to_string( wanted ) + " arguments wanted, " + std::to_string( given ) + " given";
   if ( given < wanted ) {
      throw ConstructionError( type.name + ": argument " + std::to_string( given + 1 ) + ": " +
                               describe( type.parameters[ given ] ) + " wanted, none given (" +
                               counts + ")" );
   }
   throw ConstructionError( type.name + ": argument " + std::to_string( wanted + 1 ) +
                            ": none wanted (" + counts + ")" );
}

void refuse( const StateMachineType & type, std::size_t position, const Argument & given ) {
   const ParameterType kind{ &given.object()->fwkType(), given.writable() };
   throw ConstructionError( type.name + ": argument " + std::to_string( position + 1 ) + ": " +
                            describe( type.parameters[ position ] ) + " wanted, " +
                            describe( kind ) + " given" );
}

} // namespace Detail

Ptr< Object > construct( std::string_view name, std::span< const Argument > arguments ) {
   const StateMachineType * const type = stateMachineType( name );
   if ( type == nullptr ) {
      throw ConstructionError( String( name ) +
                               ": no loaded module has a state machine of this name" );
   }
   return type->creator( arguments );
}

} // namespace Vex
