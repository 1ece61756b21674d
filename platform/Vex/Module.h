#pragma once

// What a shared library adds to the framework: each of its folders registers one module when it is
// loaded and takes it back when it is unloaded.
//
//    const Vex::Module module( "VeloVlanXlateIntfInterlockSm",
//                              { Vex::stateMachineType( "VlanXlateIntfInterlockSm", &...Is ) } );
//
// Ownership: the module object is static in its library; the registry borrows it.
// Threading: registration takes a lock; lookups must not overlap with unloading.

#include "platform/Vex/Enum.h"
#include "platform/Vex/Export.h"
#include "platform/Vex/GenericConstruction.h"
#include "platform/Vex/String.h"

#include <string_view>
#include <vector>

namespace Vex {

class VEX_EXPORT Module {
 public:
   /// Asserts that no loaded module has this name.
   Module( std::string_view name,
           std::vector< StateMachineType > stateMachines,
           std::vector< const EnumType * > enums = {} );
   Module( const Module & ) = delete;
   Module & operator=( const Module & ) = delete;
   Module( Module && ) = delete;
   Module & operator=( Module && ) = delete;
   ~Module();

   const String & name() const noexcept { return name_; }
   const std::vector< StateMachineType > & stateMachines() const noexcept { return stateMachines_; }
   const std::vector< const EnumType * > & enums() const noexcept { return enums_; }

 private:
   String name_;
   std::vector< StateMachineType > stateMachines_;
   std::vector< const EnumType * > enums_;
};

/// The loaded modules, in the order in which they were loaded.
VEX_EXPORT std::vector< const Module * > modules();

/// The state machine that a loaded module registered under this name, or null.
VEX_EXPORT const StateMachineType * stateMachineType( std::string_view name ) noexcept;

} // namespace Vex
