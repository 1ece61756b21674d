#include "replay/explain/Reason.h"

namespace Explain {

std::string_view nameOf( Gate gate ) noexcept {
   switch ( gate ) {
   case Gate::egressAcl:
      return "egress-acl";
   case Gate::vlanXlate:
      return "vlan-xlate";
   }
   return {};
}

std::string_view nameOf( Decider decider ) noexcept {
   switch ( decider ) {
   case Decider::basic:
      return "basic";
   case Decider::peer:
      return "peer-coordinated";
   case Decider::deprecated:
      return "deprecated";
   case Decider::vlanXlate:
      return "vlan-xlate";
   }
   return {};
}

std::string_view nameOf( Reason reason ) noexcept {
   switch ( reason ) {
   case Reason::notMember:
      return "not-a-member";
   case Reason::lagDown:
      return "exchange-down";
   case Reason::awaitingPeer:
      return "waiting-for-peer";
   case Reason::noLocalAcl:
      return "no-local-acl";
   case Reason::noTranslation:
      return "no-translation";
   case Reason::notMlag:
      return "no-mlag-interface";
   case Reason::aclNotNeeded:
      return "acl-not-needed";
   case Reason::aclInPlace:
      return "acl-in-place";
   case Reason::peerAnswered:
      return "peer-answered";
   case Reason::failOpen:
      return "fail-open";
   case Reason::translationNotNeeded:
      return "translation-not-needed";
   case Reason::translationInPlace:
      return "translation-in-place";
   }
   return {};
}

std::string_view wordsFor( Reason reason ) noexcept {
   switch ( reason ) {
   case Reason::notMember:
      return "is no member of the LAG";
   case Reason::lagDown:
      return "nothing is asked of the peer yet";
   case Reason::awaitingPeer:
      return "waits for the peer's answer";
   case Reason::noLocalAcl:
      return "its egress ACL is not installed";
   case Reason::noTranslation:
      return "VLAN translation is not programmed";
   case Reason::notMlag:
      return "the LAG is no MLAG interface";
   case Reason::aclNotNeeded:
      return "no egress ACL is needed";
   case Reason::aclInPlace:
      return "its egress ACL is installed";
   case Reason::peerAnswered:
      return "the peer has answered, and no local egress ACL is missing";
   case Reason::failOpen:
      return "the link counts as failed: its members join without the peer's answer";
   case Reason::translationNotNeeded:
      return "no VLAN translation is needed";
   case Reason::translationInPlace:
      return "VLAN translation is programmed";
   }
   return {};
}

bool admits( Reason reason ) noexcept {
   switch ( reason ) {
   case Reason::notMember:
   case Reason::lagDown:
   case Reason::awaitingPeer:
   case Reason::noLocalAcl:
   case Reason::noTranslation:
      return false;
   case Reason::notMlag:
   case Reason::aclNotNeeded:
   case Reason::aclInPlace:
   case Reason::peerAnswered:
   case Reason::failOpen:
   case Reason::translationNotNeeded:
   case Reason::translationInPlace:
      return true;
   }
   return false;
}

std::string_view nameOf( Check check ) noexcept {
   switch ( check ) {
   case Check::memberOfLag:
      return "member of the LAG";
   case Check::lagHasMembers:
      return "LAG has members";
   case Check::mlagInterface:
      return "LAG is an MLAG interface";
   case Check::request:
      return "request to the peer";
   case Check::peersAnswer:
      return "peer's answer";
   case Check::mlagActive:
      return "MLAG is active";
   case Check::peerLink:
      return "peer link is up";
   case Check::activeOnPeer:
      return "LAG is active on the peer";
   case Check::aclNeeded:
      return "egress ACL needed";
   case Check::localAcl:
      return "egress ACL installed";
   case Check::translationNeeded:
      return "VLAN translation needed";
   case Check::translation:
      return "VLAN translation programmed";
   }
   return {};
}

Check checkOf( Reason reason ) noexcept {
   switch ( reason ) {
   case Reason::notMember:
      return Check::memberOfLag;
   case Reason::lagDown:
   case Reason::awaitingPeer:
   case Reason::failOpen:
      return Check::peersAnswer;
   case Reason::noLocalAcl:
   case Reason::aclInPlace:
   case Reason::peerAnswered:
      return Check::localAcl;
   case Reason::notMlag:
      return Check::mlagInterface;
   case Reason::aclNotNeeded:
      return Check::aclNeeded;
   case Reason::translationNotNeeded:
      return Check::translationNeeded;
   case Reason::noTranslation:
   case Reason::translationInPlace:
      return Check::translation;
   }
   return {};
}

} // namespace Explain
