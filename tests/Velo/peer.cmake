# The peer-coordinated egress-ACL interlock and the controller.
interlock_tests( peer-tests LIBRARIES velo-objects SOURCES
   VeloMlagEgressAclIntfInterlockSm/ControllerTest.cpp
   VeloMlagEgressAclIntfInterlockSm/PeerAdmissionTest.cpp
   VeloMlagEgressAclIntfInterlockSm/PeerLinkStateTest.cpp
   VeloMlagEgressAclIntfInterlockSm/PeerReentrancyTest.cpp
   VeloMlagEgressAclIntfInterlockSm/PeerRetiredTest.cpp
   VeloMlagEgressAclIntfInterlockSm/PeerTimeoutTest.cpp
   VeloMlagEgressAclIntfInterlockSm/PeerTraceTest.cpp )
target_compile_definitions( peer-tests PRIVATE INTERLOCK_DOCUMENTS="${CMAKE_SOURCE_DIR}/docs" )

# Small worlds played through whole.
interlock_tests( peer-exhaustive-tests LIBRARIES velo-objects SOURCES
   VeloMlagEgressAclIntfInterlockSm/PeerExhaustiveTest.cpp
   VeloMlagEgressAclIntfInterlockSm/PeerLivenessTest.cpp
   VeloMlagEgressAclIntfInterlockSm/PeerModel.cpp
   VeloMlagEgressAclIntfInterlockSm/PeerRandomTest.cpp )
