# The deprecated egress-ACL interlock, in an executable of its own.
interlock_tests( velo-deprecated-tests LIBRARIES velo-objects SOURCES
   VeloMlagEgressAclIntfInterlockSm/DeprecatedBesideBasicTest.cpp
   VeloMlagEgressAclIntfInterlockSm/DeprecatedLifeTest.cpp
   VeloMlagEgressAclIntfInterlockSm/DeprecatedRandomTest.cpp
   VeloMlagEgressAclIntfInterlockSm/DeprecatedTest.cpp
   VeloMlagEgressAclIntfInterlockSm/DeprecatedTraceTest.cpp
   VeloMlagEgressAclIntfInterlockSm/DeprecatedWiringTest.cpp )
