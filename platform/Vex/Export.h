#pragma once

// Marks what libInterlockModel.so exports. Everything else in it is built with hidden visibility.
#define VEX_EXPORT __attribute__( ( visibility( "default" ) ) )
