#include "platform/Vex/Module.h"

#include "platform/Vex/Assert.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace Vex {

namespace {

struct Registry {
   std::mutex mutex;
   std::vector< const Module * > modules;
};

// Never destroyed: libraries unload after static destruction has begun.
Registry & registry() {
   static auto * const instance = new Registry;
   return *instance;
}

} // namespace

Module::Module( std::string_view name,
                std::vector< StateMachineType > stateMachines,
                std::vector< const EnumType * > enums )
    : name_( name ), stateMachines_( std::move( stateMachines ) ), enums_( std::move( enums ) ) {
   const std::lock_guard lock( registry().mutex );
   VEX_ASSERT( std::ranges::none_of(
      registry().modules, [ & ]( const Module * loaded ) { return loaded->name() == name_; } ) );
   registry().modules.push_back( this );
}

Module::~Module() {
   const std::lock_guard lock( registry().mutex );
   std::erase( registry().modules, this );
}

std::vector< const Module * > modules() {
   const std::lock_guard lock( registry().mutex );
   return registry().modules;
}

const StateMachineType * stateMachineType( std::string_view name ) noexcept {
   const std::lock_guard lock( registry().mutex );
   for ( const Module * module : registry().modules ) {
      for ( const StateMachineType & type : module->stateMachines() ) {
         if ( type.name == name ) {
            return &type;
         }
      }
   }
   return nullptr;
}

const EnumType * enumType( std::string_view name ) noexcept {
   const std::lock_guard lock( registry().mutex );
   for ( const Module * module : registry().modules ) {
      for ( const EnumType * type : module->enums() ) {
         if ( type->name == name ) {
            return type;
         }
      }
   }
   return nullptr;
}

} // namespace Vex
