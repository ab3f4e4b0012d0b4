#include "ui/main/Mnemonics.h"

#include <cctype>

namespace Mnemonics {

std::vector<std::string> Mark(const std::vector<std::string>& captions, std::string taken) {
    std::vector<std::string> marked;
    marked.reserve(captions.size());
    for (const std::string& caption : captions) {
        std::string plain = Plain(caption), out;
        bool placed = false;
        for (char c : plain) {
            const char up = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
            if (!placed && std::isalpha(static_cast<unsigned char>(c)) &&
                taken.find(up) == std::string::npos) {
                out += '&';
                taken += up;
                placed = true;
            }
            if (c == '&') out += '&';
            out += c;
        }
        marked.push_back(out);
    }
    return marked;
}

std::string Plain(const std::string& caption) {
    std::string plain;
    for (std::size_t i = 0; i < caption.size(); ++i) {
        if (caption[i] == '&' && i + 1 < caption.size()) ++i;
        plain += caption[i];
    }
    return plain;
}

} // namespace Mnemonics
