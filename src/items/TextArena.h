#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace vireo {

/// Keeps texts close together, as long as it lives. Not synchronised.
class TextArena {
public:
    /// The copy, which stays where it is; not null, even of nothing.
    std::string_view keep(std::string_view text) {
        if (m_next == nullptr || text.size() > m_left) {
            const std::size_t size = std::max(kBlock, text.size());
            m_blocks.push_back(std::unique_ptr<char[]>(new char[size]));
            m_next = m_blocks.back().get();
            m_left = size;
        }
        char* const copy = m_next;
        std::copy(text.begin(), text.end(), copy);
        m_next += text.size();
        m_left -= text.size();
        return {copy, text.size()};
    }

private:
    static constexpr std::size_t kBlock = std::size_t{64} * 1024;

    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_next = nullptr;
    std::size_t m_left = 0;
};

}  // namespace vireo
