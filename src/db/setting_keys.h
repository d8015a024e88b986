// Keys of configuracionWebGlobal (its `nombre`) that more than the document's mapping asks for.
#pragma once

namespace tarvodb::setting {

// What their elements are called does not say what these hold; the pairing is kept as it is.
inline constexpr const char* kLanguage = "codtimezone";
inline constexpr const char* kCountry = "idtimezone";
inline constexpr const char* kTimeZone = "subtimezone";

// The oscillators, in MHz, that turn a received into an intermediate frequency.
inline constexpr const char* kLowBandOscillator = "LNB_fb";
inline constexpr const char* kHighBandOscillator = "LNB_fa";

inline constexpr const char* kContract = "identificacion_contrato";

// The remote-control server.
inline constexpr const char* kServerKeys = "servidorZEN%";  // as LIKE takes it
inline constexpr const char* kServerActive = "servidorZEN_activo";
inline constexpr const char* kServerInterval = "servidorZEN_intervalo";
inline constexpr const char* kServerAddress = "servidorZEN_direccion";
inline constexpr const char* kServerUser = "servidorZEN_usuario";
inline constexpr const char* kServerPassword = "servidorZEN_password";

}  // namespace tarvodb::setting
