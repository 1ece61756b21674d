#include "replay/pair/Responder.h"

#include "interlock-model/Hardware/Lag/InitialMember.h"
#include "platform/Vex/Entity.h"
#include "replay/pair/Admission.h"

#include <utility>

namespace Replay::Peering {

class Responder::AclWatcher final
    : public Vex::ConstNotifiee< Interface::Interlock::IntfFeatureStatus > {
 public:
   explicit AclWatcher( Responder & responder ) noexcept : responder_( responder ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Replay::Peering::Responder::AclWatcher" };
      return type;
   }
   void onAttribute( Attribute attribute, const Key & pair ) override {
      switch ( attribute ) {
      case Attribute::intf:
         responder_.decide( pair.lag );
         break;
      }
   }

 private:
   Responder & responder_; // holds us
};

class Responder::ConfigWatcher final : public Vex::ConstNotifiee< Hardware::Lag::Config > {
 public:
   explicit ConfigWatcher( Responder & responder ) noexcept : responder_( responder ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Replay::Peering::Responder::ConfigWatcher" };
      return type;
   }
   void onAttribute( Attribute attribute, const Key & lag ) override {
      switch ( attribute ) {
      case Attribute::initialMember:
         responder_.follow( lag );
         responder_.decide( lag );
         break;
      }
   }

 private:
   Responder & responder_; // holds us
};

class Responder::MemberWatcher final : public Vex::ConstNotifiee< Hardware::Lag::InitialMember > {
 public:
   explicit MemberWatcher( Responder & responder ) noexcept : responder_( responder ) {}

   const Vex::Type & fwkType() const noexcept override {
      static constexpr Vex::Type type{ "Replay::Peering::Responder::MemberWatcher" };
      return type;
   }
   void onAttribute( Attribute attribute, const Key & /* member */ ) override {
      switch ( attribute ) {
      case Attribute::member:
         responder_.decide( notifier()->key() );
         break;
      }
   }

 private:
   Responder & responder_; // holds us
};

Responder::Responder( Vex::Ptr< const Interface::Interlock::IntfFeatureStatus > acl,
                      Vex::Ptr< const Hardware::Lag::Config > config,
                      Answer answer )
    : acl_( std::move( acl ) ), config_( std::move( config ) ), answer_( std::move( answer ) ),
      aclWatcher_( Vex::make< AclWatcher >( *this ) ),
      configWatcher_( Vex::make< ConfigWatcher >( *this ) ) {
   aclWatcher_->notifierIs( acl_ );
   configWatcher_->notifierIs( config_ );
   for ( const Nodo::IntfId lag : config_->initialMember().keys() ) {
      follow( lag );
   }
}

Responder::~Responder() = default;

void Responder::requestIs( Nodo::IntfId lag, std::optional< std::uint32_t > token ) {
   if ( token ) {
      requests_.put( lag, *token );
   } else {
      requests_.erase( lag );
   }
   decide( lag );
}

bool Responder::isReady( Nodo::IntfId lag ) const {
   return hasEveryAcl( *acl_, *config_, lag );
}

void Responder::onIs( bool on ) {
   on_ = on;
   for ( const Nodo::IntfId lag : requests_.keys() ) {
      decide( lag );
   }
   for ( const Nodo::IntfId lag : answers_.keys() ) {
      decide( lag );
   }
}

// One watcher on the LAG's InitialMember, none where there is none.
void Responder::follow( Nodo::IntfId lag ) {
   const auto members = config_->initialMember( lag );
   if ( !members ) {
      memberWatchers_.erase( lag );
      return;
   }
   auto watcher = memberWatchers_.get( lag );
   if ( !watcher ) {
      watcher = Vex::make< MemberWatcher >( *this );
      memberWatchers_.put( lag, watcher );
   }
   watcher->notifierIs( members );
}

void Responder::decide( Nodo::IntfId lag ) {
   if ( !on_ ) {
      return;
   }
   const std::uint32_t * const request = requests_.find( lag );
   const bool answers = request != nullptr && isReady( lag );
   if ( answers ? answers_.put( lag, *request ) : answers_.erase( lag ) ) {
      answer_( lag, answers ? std::optional( *request ) : std::nullopt );
   }
}

} // namespace Replay::Peering
