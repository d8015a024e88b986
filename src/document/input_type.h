// What an input receives: the code in its `type` element and in EntradasGlobal.tipoEntrada.
#pragma once

namespace document {

enum class InputType : int { satellite = 0, terrestrial = 1, cable = 2 };

}  // namespace document
