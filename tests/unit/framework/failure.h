#pragma once

#include <exception>
#include <string>

/// The text of the exception that \a call throws.
template <typename Call>
std::string failure(Call call) {
    try {
        call();
    } catch (std::exception const &error) {
        return error.what();
    }
    return "nothing thrown";
}
