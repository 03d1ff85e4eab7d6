#include "tests/pages/support/Browser.h"

#include <chrono>
#include <thread>
#include <utility>

namespace pages {

namespace {

constexpr long timeoutSeconds = 20;

std::size_t Append(char *data, std::size_t size, std::size_t count, void *body) {
    static_cast<std::string *>(body)->append(data, size * count);
    return size * count;
}

std::string Encoded(CURL *curl, std::string const &text) {
    char *encoded = curl_easy_escape(curl, text.data(), static_cast<int>(text.size()));
    std::string result = encoded;
    curl_free(encoded);
    return result;
}

std::string TextOf(CURL *curl, CURLINFO info) {
    char const *text = nullptr;
    curl_easy_getinfo(curl, info, &text);
    return text ? text : "";
}

}  // namespace

Browser::Browser(std::string address)
    : _address(std::move(address)), _curl(curl_easy_init(), &curl_easy_cleanup) {}

Answer Browser::Get(std::string const &path) {
    curl_easy_reset(_curl.get());
    return Perform(path);
}

Answer Browser::Post(std::string const &path, Fields const &fields) {
    std::string body;
    for (auto const &[name, value] : fields)
        body += (body.empty() ? "" : "&") + Encoded(_curl.get(), name) + '=' + Encoded(_curl.get(), value);
    return Post(path, body, "application/x-www-form-urlencoded");
}

Answer Browser::Post(std::string const &path, std::string const &body, std::string const &contentType) {
    curl_easy_reset(_curl.get());
    curl_easy_setopt(_curl.get(), CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(_curl.get(), CURLOPT_COPYPOSTFIELDS, body.c_str());
    return Perform(path, "Content-Type: " + contentType);
}

Answer Browser::PostFile(std::string const &path, Upload const &upload, Fields const &fields) {
    curl_easy_reset(_curl.get());
    std::unique_ptr<curl_mime, decltype(&curl_mime_free)> const form(curl_mime_init(_curl.get()),
                                                                     &curl_mime_free);
    auto const add = [&](std::string const &name, std::string const &content) {
        curl_mimepart *const part = curl_mime_addpart(form.get());
        curl_mime_name(part, name.c_str());
        curl_mime_data(part, content.data(), content.size());
        return part;
    };
    curl_mimepart *const file = add(upload.field, upload.content);
    curl_mime_filename(file, upload.name.c_str());
    curl_mime_type(file, upload.type.c_str());
    for (auto const &[name, value] : fields)
        add(name, value);
    curl_easy_setopt(_curl.get(), CURLOPT_MIMEPOST, form.get());
    return Perform(path);
}

Answer Browser::Call(std::string const &method, std::string const &parameters) {
    constexpr std::string_view before = R"({"id":1,"error":null,"result":)";
    std::string const call = R"({"method":")" + method + R"(","params":)" + parameters + R"(,"id":1})";
    Answer answer = Post("/status/rpc", call, "application/json");
    if (answer.body.starts_with(before) && answer.body.ends_with('}'))
        answer.result = answer.body.substr(before.size(), answer.body.size() - before.size() - 1);
    return answer;
}

bool Browser::WaitUntilUp(int seconds, std::string const &path) {
    using namespace std::chrono_literals;
    for (int tries = seconds * 20; tries > 0; --tries) {
        if (Get(path).status == 200)
            return true;
        std::this_thread::sleep_for(50ms);
    }
    return false;
}

Answer Browser::Perform(std::string const &path, std::string const &type) {
    Answer answer;
    curl_slist *lines = type.empty() ? nullptr : curl_slist_append(nullptr, type.c_str());
    for (auto const &line : headers)
        lines = curl_slist_append(lines, line.c_str());
    std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> const owner(lines, &curl_slist_free_all);
    curl_easy_setopt(_curl.get(), CURLOPT_HTTPHEADER, lines);
    curl_easy_setopt(_curl.get(), CURLOPT_URL, (_address + path).c_str());
    curl_easy_setopt(_curl.get(), CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(_curl.get(), CURLOPT_HTTPAUTH, CURLAUTH_DIGEST);  // used with a log-in only
    curl_easy_setopt(_curl.get(), CURLOPT_TIMEOUT, timeoutSeconds);
    curl_easy_setopt(_curl.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(_curl.get(), CURLOPT_WRITEFUNCTION, &Append);
    curl_easy_setopt(_curl.get(), CURLOPT_WRITEDATA, &answer.body);
    curl_easy_setopt(_curl.get(), CURLOPT_HEADERDATA, &answer.headers);
    curl_easy_setopt(_curl.get(), CURLOPT_HEADERFUNCTION, &Append);
    if (curl_easy_perform(_curl.get()) != CURLE_OK)
        return {};
    curl_easy_getinfo(_curl.get(), CURLINFO_RESPONSE_CODE, &answer.status);
    answer.contentType = TextOf(_curl.get(), CURLINFO_CONTENT_TYPE);
    answer.location = TextOf(_curl.get(), CURLINFO_REDIRECT_URL);
    return answer;
}

}  // namespace pages
