// What the controller models have in common. Names are compared exactly; an unknown model is a
// controller without any of these.
#pragma once

#include <string_view>

namespace tarvo_remote_control::model {

inline constexpr std::string_view kAll[] = {"QRA-310", "LMV-502", "PKD-707", "RNB-K408",
                                            "WVX-AQ4", "LMV-512", "WVX-BQ4"};

constexpr bool isFamilyA(std::string_view name) {
    return name == "QRA-310" || name == "LMV-502" || name == "PKD-707";
}
constexpr bool isRNB(std::string_view name) { return name == "RNB-K408"; }
constexpr bool isWVXA(std::string_view name) { return name == "WVX-AQ4"; }
constexpr bool isLMV(std::string_view name) { return name == "LMV-502" || name == "LMV-512"; }
constexpr bool isPKD(std::string_view name) { return name == "PKD-707"; }
constexpr bool isWVXB(std::string_view name) { return name == "WVX-BQ4"; }

}  // namespace tarvo_remote_control::model
