#include "backup/utf8.h"

namespace tarvo_backup {

std::size_t characterLength(std::string_view text) {
    const auto byteAt = [text](std::size_t place) {
        return place < text.size() ? static_cast<unsigned char>(text[place]) : 0U;
    };
    struct Form {
        unsigned lowestLead;
        unsigned highestLead;
        unsigned lowestSecond;
        unsigned highestSecond;
        std::size_t length;
    };
    // Second bytes are limited where others would be overlong, surrogates or beyond U+10FFFF.
    static constexpr Form kForms[] = {
        {0xc2, 0xdf, 0x80, 0xbf, 2}, {0xe0, 0xe0, 0xa0, 0xbf, 3}, {0xe1, 0xec, 0x80, 0xbf, 3},
        {0xed, 0xed, 0x80, 0x9f, 3}, {0xee, 0xef, 0x80, 0xbf, 3}, {0xf0, 0xf0, 0x90, 0xbf, 4},
        {0xf1, 0xf3, 0x80, 0xbf, 4}, {0xf4, 0xf4, 0x80, 0x8f, 4},
    };
    if (byteAt(0) < 0x80) {
        return 1;
    }
    for (const Form& form : kForms) {
        if (byteAt(0) < form.lowestLead || byteAt(0) > form.highestLead) {
            continue;
        }
        bool isWhole = byteAt(1) >= form.lowestSecond && byteAt(1) <= form.highestSecond;
        for (std::size_t place = 2; place < form.length; ++place) {
            isWhole = isWhole && (byteAt(place) & 0xc0U) == 0x80U;
        }
        return isWhole ? form.length : 0;
    }
    return 0;
}

char32_t codePoint(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character.front());
    // The lead of a character of so many bytes has as many bits less, but for ASCII.
    char32_t point = character.size() == 1 ? lead : lead & (0xffU >> (character.size() + 1));
    for (const char byte : character.substr(1)) {
        point = point << 6U | (static_cast<unsigned char>(byte) & 0x3fU);
    }
    return point;
}

std::string shortened(std::string_view text, std::size_t longest) {
    if (text.size() <= longest) {
        return std::string(text);
    }
    // Bytes that are no character's have no beginning nearby.
    const auto isInside = [text](std::size_t place) {
        return place < text.size() && (static_cast<unsigned char>(text[place]) & 0xc0U) == 0x80U;
    };
    constexpr std::size_t kMostInside = 3;
    std::size_t end = longest / 2;
    std::size_t start = text.size() - longest / 2;
    for (std::size_t step = 0; step < kMostInside; ++step) {
        end -= end > 0 && isInside(end) ? 1U : 0U;
        start += isInside(start) ? 1U : 0U;
    }
    return std::string(text.substr(0, end)).append("\xe2\x80\xa6").append(text.substr(start));
}

std::string shortened(std::string_view text) {
    constexpr std::size_t kLongestInPassing = 120;
    return shortened(text, kLongestInPassing);
}

bool isControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return (byte < 0x20 && character != '\t' && character != '\n' && character != '\r') ||
           byte == 0x7f;
}

}  // namespace tarvo_backup
