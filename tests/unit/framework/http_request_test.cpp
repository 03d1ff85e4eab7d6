#include <cppcms/cppcms_error.h>
#include <cppcms/http_content_type.h>
#include <cppcms/http_cookie.h>
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
        char const *text;
        char const *fields;
        Result result;
    } const cases[] = {
        {"", "", Result::complete},
        {"a=1&b=2", "a=1;b=2;", Result::complete},
        {"a=1&", "a=1;", Result::complete},
        {"a=&b==", "a=;b==;", Result::complete},
        {"a+b=c+d%20e%2bf", "a b=c d e+f;", Result::complete},
        {"a=c%zz%4", "a=czz4;", Result::complete},
        {"a=1;b=2", "a=1;b=2;", Result::complete},
        {"b=2&a=1&a=0", "a=1;a=0;b=2;", Result::complete},
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

TEST(FormDecoder, StopsAtTheLimit) {
    std::string text;
    for (std::size_t i = 0; i <= cppcms::impl::max_form_fields; ++i)
        text += "a=1&";
    cppcms::impl::form_fields fields;
    EXPECT_EQ(cppcms::impl::decode_form(text, fields), cppcms::impl::form_result::too_many);
    EXPECT_EQ(fields.size(), cppcms::impl::max_form_fields);
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
    auto const files = request.files();
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0]->name(), "f");
    EXPECT_EQ(files[0]->filename(), "");
    EXPECT_EQ(files[0]->size(), 0);
    EXPECT_EQ(files[1]->filename(), "/a/b.txt");
    EXPECT_EQ(files[1]->mime(), "text/plain");
    std::string content;
    files[1]->data() >> content;
    EXPECT_EQ(content, "hello");
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

TEST_F(UploadedFile, GoesToDiskBeyondItsLimit) {
    {
        http::file file;
        file.set_memory_limit(10);
        file.set_temporary_directory(directory_);
        file.write_data() << "0123456789";
        EXPECT_EQ(Files(), 0u);
        file.write_data() << "ab";
        EXPECT_EQ(Files(), 1u);
        EXPECT_EQ(std::filesystem::directory_iterator(directory_)->status().permissions(),
                  std::filesystem::perms(0600));
        EXPECT_EQ(file.size(), 12);
        file.data().seekg(8);
        std::string text;
        file.data() >> text;
        EXPECT_EQ(text, "89ab");
    }
    EXPECT_EQ(Files(), 0u) << "removed with its object";
}

TEST_F(UploadedFile, IsSavedAsOftenAsItIsInMemoryAndOnceFromDisk) {
    http::file memory;
    memory.write_data() << "text";
    memory.save_to(directory_ / "a");
    memory.save_to(directory_ / "b");
    EXPECT_EQ(Read(directory_ / "a") + Read(directory_ / "b"), "texttext");

    http::file disk;
    disk.set_memory_limit(0);
    disk.set_temporary_directory(directory_);
    disk.write_data() << "longer text";
    std::string all(std::istreambuf_iterator<char>(disk.data()), {});
    disk.save_to(directory_ / "a");
    EXPECT_EQ(Read(directory_ / "a"), "longer text");
    EXPECT_EQ(Files(), 2u) << "moved, not copied";
    EXPECT_THROW(disk.save_to(directory_ / "c"), cppcms::cppcms_error);

    http::file nowhere;
    EXPECT_THROW(nowhere.save_to(directory_ / "none" / "c"), cppcms::cppcms_error);
}

TEST_F(UploadedFile, FailsToGrowWhereThereIsNoFolder) {
    http::file file;
    file.set_memory_limit(1);
    file.set_temporary_directory(directory_ / "none");
    file.write_data() << "text";
    EXPECT_TRUE(file.write_data().fail());
}

}  // namespace
