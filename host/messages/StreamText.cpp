#include "messages/StreamText.h"

#include <streambuf>

namespace vireo {

std::string StreamText::takeAll(std::istream& in) {
    std::string text;
    std::streambuf& buffer = *in.rdbuf();
    for (std::streamsize ready = buffer.in_avail(); ready > 0; ready = buffer.in_avail()) {
        const std::size_t start = text.size();
        text.resize(start + static_cast<std::size_t>(ready));
        const std::streamsize got = buffer.sgetn(text.data() + start, ready);
        if (got < ready) {
            text.resize(start + static_cast<std::size_t>(got < 0 ? 0 : got));
            break;
        }
    }
    return text;
}

}  // namespace vireo
