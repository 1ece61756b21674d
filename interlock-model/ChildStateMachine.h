#pragma once

// A state machine that another one owns, declared among its reactors:
//
//    InterlockModel::ChildStateMachine< SomeSm > child_{ *this };
//
// It hears of notifications being switched in the order of declaration, and is dropped, without
// more ado, after the owner's reactors.

#include "interlock-model/StateMachine.h"
#include "platform/Vex/Ptr.h"

#include <utility>

namespace InterlockModel {

template < class Sm >
class ChildStateMachine final : public ReactorMember {
 public:
   explicit ChildStateMachine( StateMachine & owner ) noexcept
       : ReactorMember( owner, Kind::collection ) {}
   ~ChildStateMachine() override { detach(); }

   /// The child, or null.
   const Vex::Ptr< Sm > & sm() const noexcept { return sm_; }

   /// Takes `sm` in, in place of what was there.
   void is( Vex::Ptr< Sm > sm ) {
      std::swap( sm_, sm );
      drop( std::move( sm ) );
   }
   /// Takes the child out, its notifications off; null when there is none.
   [[nodiscard]] Vex::Ptr< Sm > del() {
      auto removed = std::exchange( sm_, nullptr );
      if ( removed ) {
         removed->hasNotificationActiveIs( false );
      }
      return removed;
   }
   /// Lets go of a child that was taken out. It may be in the middle of a handler and outlive this
   /// call; as a zombie it acts no more.
   static void drop( Vex::Ptr< Sm > removed ) {
      if ( removed ) {
         removed->vexDoZombieReactors( true );
      }
      removed.release();
   }

   void hasNotificationActiveIs( bool active ) override {
      if ( sm_ ) {
         sm_->hasNotificationActiveIs( active );
      }
   }
   /// A child has its own mark: it gets it when it is dropped.
   void vexDoZombieReactors( bool /* zombie */ ) override {}
   void detach() noexcept override { drop( del() ); }

 private:
   Vex::Ptr< Sm > sm_;
};

} // namespace InterlockModel
