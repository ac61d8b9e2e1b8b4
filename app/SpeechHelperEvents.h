// What the program that holds the connection to the speech service tells the tuner, one byte each
// on its standard output. It reads the texts on its standard input, UTF-8, each ended by a zero
// byte. A program of its own, because the service's library can block for ever, and ends the
// process that it runs in when the connection breaks at the wrong moment.
#pragma once

namespace orvane {

inline constexpr char kSpeechConnected = 'c';  // texts are being read from now on
inline constexpr char kSpeechBegun = 'b';      // the text can be heard
inline constexpr char kSpeechEnded = 'e';      // it has been said or cancelled

}  // namespace orvane
