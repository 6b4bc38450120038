#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace simulator {

// Event codes of the front-panel keys.
enum class key : uint16_t { ok = 2, right = 3, left = 4, down = 5, up = 6, esc = 7, power = 8 };

struct key_name {
    std::string_view name;
    key code;
};

constexpr std::array<key_name, 7> key_names = {{{"ok", key::ok},
                                                {"right", key::right},
                                                {"left", key::left},
                                                {"down", key::down},
                                                {"up", key::up},
                                                {"esc", key::esc},
                                                {"power", key::power}}};

// The key of this name; nothing if there is none.
constexpr std::optional<key> key_named(std::string_view name) {
    for (const key_name &known : key_names) {
        if (known.name == name) {
            return known.code;
        }
    }
    return std::nullopt;
}

constexpr std::string_view name_of(key which) {
    for (const key_name &known : key_names) {
        if (known.code == which) {
            return known.name;
        }
    }
    return {};
}

} // namespace simulator
