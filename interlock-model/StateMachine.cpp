#include "interlock-model/StateMachine.h"

namespace InterlockModel {

ReactorMember::ReactorMember( StateMachine & owner, Kind kind ) noexcept : kind_( kind ) {
   ( owner.lastMember_ == nullptr ? owner.firstMember_ : owner.lastMember_->next_ ) = this;
   owner.lastMember_ = this;
}

ReactorMember::~ReactorMember() = default;

void StateMachine::hasNotificationActiveIs( bool active ) {
   if ( notificationActive_ == active ) {
      return;
   }
   notificationActive_ = active;
   for ( ReactorMember * member = firstMember_; member != nullptr; member = member->next_ ) {
      member->hasNotificationActiveIs( active );
   }
}

void StateMachine::vexDoZombieReactors( bool zombie ) {
   if ( markedForDeletion_ == zombie ) {
      return;
   }
   for ( ReactorMember * member = firstMember_; member != nullptr; member = member->next_ ) {
      member->vexDoZombieReactors( zombie );
   }
   markedForDeletion_ = zombie;
}

void StateMachine::lastReferenceGone() noexcept {
   vexDoZombieReactors( true );
   for ( const auto kind : { ReactorMember::Kind::reactor, ReactorMember::Kind::collection } ) {
      for ( ReactorMember * member = firstMember_; member != nullptr; member = member->next_ ) {
         if ( member->kind_ == kind ) {
            member->detach();
         }
      }
   }
}

} // namespace InterlockModel
