#pragma once

#include <map>
#include <string>
#include <string_view>

/// The web server's side of FastCGI, as far as tests need it.
namespace fastcgi {

constexpr int begin_request = 1;
constexpr int end_request = 3;
constexpr int params = 4;
constexpr int standard_input = 5;
constexpr int standard_output = 6;
constexpr int get_values = 9;

inline std::string Record(int type, std::string_view content, int id = 1) {
    std::string record{1, static_cast<char>(type), 0, static_cast<char>(id)};
    record += static_cast<char>(content.size() >> 8);
    record += static_cast<char>(content.size() & 255);
    record += std::string(2, '\0');
    return record.append(content);
}

inline std::string BeginRequest(bool keep_connection, int role = 1) {
    return Record(begin_request,
                  std::string{0, static_cast<char>(role), static_cast<char>(keep_connection), 0, 0, 0, 0, 0});
}

inline std::string Length(std::size_t size) {
    if (size < 128)
        return {static_cast<char>(size)};
    return {static_cast<char>(0x80 | (size >> 24)), static_cast<char>(size >> 16),
            static_cast<char>(size >> 8), static_cast<char>(size)};
}

inline std::string Pair(std::string_view name, std::string_view value) {
    return Length(name.size()) + Length(value.size()) + std::string(name) + std::string(value);
}

inline std::string Request(std::map<std::string, std::string> const &variables, std::string_view body,
                           bool keep_connection) {
    std::string pairs;
    for (auto const &[name, value] : variables)
        pairs += Pair(name, value);
    std::string request = BeginRequest(keep_connection) + Record(params, pairs) + Record(params, "");
    for (; !body.empty(); body.remove_prefix(std::min<std::size_t>(body.size(), 60000)))
        request += Record(standard_input, body.substr(0, 60000));
    return request + Record(standard_input, "");
}

/// What came back: the standard output, and whether the request was ended.
struct Answer {
    std::string output;
    bool ended = false;
    int protocol_status = -1;
};

/// Takes the records of one answer off the front of \a bytes.
inline Answer TakeAnswer(std::string &bytes) {
    Answer answer;
    while (bytes.size() >= 8 && !answer.ended) {
        auto const byte = [&](std::size_t at) {
            return static_cast<std::size_t>(static_cast<unsigned char>(bytes[at]));
        };
        std::size_t const size = byte(4) * 256 + byte(5);
        std::size_t const whole = 8 + size + byte(6);
        if (bytes.size() < whole)
            break;
        if (bytes[1] == standard_output)
            answer.output += bytes.substr(8, size);
        answer.ended = bytes[1] == end_request;
        if (answer.ended)
            answer.protocol_status = static_cast<unsigned char>(bytes[12]);
        bytes.erase(0, whole);
    }
    return answer;
}

}  // namespace fastcgi
