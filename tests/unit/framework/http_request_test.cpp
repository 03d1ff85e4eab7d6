#include <cppcms/cppcms_error.h>
#include <cppcms/http_content_type.h>
#include <cppcms/http_file.h>
#include <cppcms/http_request.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "fake_request.h"
#include "http/form_decoder.h"

namespace {

namespace http = cppcms::http;

/// Settings without a log on the screen.
cppcms::json::value Quiet() {
    cppcms::json::value settings;
    settings.set("logging.stderr", false);
    return settings;
}

std::string Text(http::request::form_type const &fields) {
    std::string text;
    for (auto const &[name, value] : fields)
        text.append(name).append("=").append(value).append(";");
    return text;
}

TEST(FormDecoder, DecodesPairsUpToTheFirstMalformedOne) {
    using Result = cppcms::impl::form_result;
    struct {
        std::string text;
        char const *fields;
        Result result;
    } const cases[] = {
        {"", "", Result::complete},
        {"a=1&b=2", "a=1;b=2;", Result::complete},
        {"a=1&", "a=1;", Result::complete},
        {"a=&b==", "a=;b==;", Result::complete},
        {"a+b=c+d%20e%2bf", "a b=c d e+f;", Result::complete},
        {"b=2&a=1;b=2&a=c%zz%4", "a=1;b=2;a=czz4;b=2;", Result::complete},
        {"a=1&bb&c=2", "a=1;", Result::malformed},
        {"a=1&&c=2", "a=1;", Result::malformed},
        {"=1", "", Result::malformed},
        {"&a=1", "", Result::malformed},
    };
    for (auto const &c : cases) {
        cppcms::impl::form_fields fields;
        EXPECT_EQ(cppcms::impl::decode_form(c.text, fields), c.result) << c.text;
        EXPECT_EQ(Text(fields), c.fields) << c.text;
    }
}

TEST(Request, SeparatesQueryAndBody) {
    cppcms::service service(Quiet());
    FakeRequest post(service, {.query = "a=1&a=2&q=x", .body = "a=3&b=4&b=5&&c=6"});
    auto &request = post.context().request();
    EXPECT_EQ(Text(request.get()), "a=1;a=2;q=x;");
    EXPECT_EQ(Text(request.post()), "a=3;b=4;b=5;");
    EXPECT_EQ(request.get("a"), "") << "a name that occurs twice has no value";
    EXPECT_EQ(request.get("q"), "x");
    EXPECT_EQ(request.post("a"), "3");
    EXPECT_EQ(request.post("none"), "");
    EXPECT_EQ(&request.post_or_get(), &request.post());
    auto const [data, size] = request.raw_post_data();
    EXPECT_EQ(std::string(static_cast<char *>(data), size), "a=3&b=4&b=5&&c=6");

    FakeRequest put(service, {.method = "PUT", .query = "a=1&b", .body = "a=3"});
    EXPECT_EQ(Text(put.context().request().get()), "") << "a bad query has no fields at all";
    EXPECT_EQ(Text(put.context().request().post()), "a=3;");
    EXPECT_EQ(&put.context().request().post_or_get(), &put.context().request().get());
}

TEST(Request, SortsPartsIntoFieldsAndFiles) {
    cppcms::service service(Quiet());
    FakeRequest upload(
        service,
        {.content_type = "Multipart/Form-Data; boundary=\"x y\"",
         .body = "--x y\r\nContent-Disposition: form-data; name=\"t\"; filename=\"no file\"\r\n\r\ntext\r\n"
                 "--x y\r\nContent-Disposition: form-data; name=\"f\"; filename=\"\"\r\n"
                 "Content-Type: application/octet-stream\r\n\r\n\r\n"
                 "--x y\r\nContent-Disposition: form-data; name=\"g\"; filename=\"/a/b.txt\"\r\n"
                 "Content-Type: text/plain; charset=utf-8\r\n\r\nhello\r\n--x y--\r\n"});
    auto &request = upload.context().request();
    EXPECT_EQ(Text(request.post()), "t=text;");
    EXPECT_EQ(request.raw_post_data().second, 0u);
    std::string files;
    for (auto const &file : request.files())
        files += file->name() + ',' + file->filename() + ',' + file->mime() + ',' +
                 std::to_string(file->size()) + ',' +
                 std::string(std::istreambuf_iterator<char>(file->data()), {}) + ';';
    EXPECT_EQ(files, "f,,application/octet-stream,0,;g,/a/b.txt,text/plain,5,hello;");
}

TEST(ContentType, IsParsed) {
    http::content_type const type(" Text/HTML ; Charset=UTF-8; b=\"q\\\"x\"");
    EXPECT_EQ(type.media_type(), "text/html");
    EXPECT_EQ(type.subtype(), "html");
    EXPECT_EQ(type.charset(), "UTF-8");
    EXPECT_EQ(type.parameter_by_key("b"), "q\"x");
    for (char const *malformed : {"", "text", "/html", "text/", "; a=b"})
        EXPECT_EQ(http::content_type(malformed).media_type(), "") << malformed;
}

class UploadedFile : public testing::Test {
  protected:
    void SetUp() override {
        directory_ = std::filesystem::path(testing::TempDir()) / ("upload-" + std::to_string(getpid()));
        std::filesystem::create_directory(directory_);
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::size_t Files() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(directory_), {}));
    }
    static std::string Read(std::filesystem::path const &path) {
        std::ifstream in(path);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    std::filesystem::path directory_;
};

TEST_F(UploadedFile, GoesToDiskBeyondItsLimitAndIsMovedFromThereOnce) {
    http::file memory;
    memory.write_data() << "text";
    for (char const *copy : {"a", "b"}) {
        memory.save_to(directory_ / copy);
        EXPECT_EQ(Read(directory_ / copy), "text");
    }
    {
        http::file disk;
        disk.set_memory_limit(10);
        disk.set_temporary_directory(directory_);
        disk.write_data() << "0123456789";
        EXPECT_EQ(Files(), 2u);
        disk.write_data() << "ab";
        EXPECT_EQ(Files(), 3u);
        EXPECT_EQ(disk.size(), 12);
        disk.data().seekg(8);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(disk.data()), {}), "89ab");
        disk.save_to(directory_ / "a");
        EXPECT_EQ(Read(directory_ / "a"), "0123456789ab");
        EXPECT_EQ(Files(), 2u) << "moved, not copied";
        EXPECT_THROW(disk.save_to(directory_ / "c"), cppcms::cppcms_error);

        http::file dropped;
        dropped.set_memory_limit(1);
        dropped.set_temporary_directory(directory_);
        dropped.write_data() << "text";
        EXPECT_EQ(Files(), 3u);
        for (auto const &entry : std::filesystem::directory_iterator(directory_))
            EXPECT_TRUE(entry.path().extension() != ".tmp" ||
                        entry.status().permissions() == std::filesystem::perms(0600));
    }
    EXPECT_EQ(Files(), 2u) << "removed with its object";

    http::file nowhere;
    EXPECT_THROW(nowhere.save_to(directory_ / "none" / "c"), cppcms::cppcms_error);
    nowhere.set_memory_limit(1);
    nowhere.set_temporary_directory(directory_ / "none");
    nowhere.write_data() << "text";
    EXPECT_TRUE(nowhere.write_data().fail());
}

}  // namespace
