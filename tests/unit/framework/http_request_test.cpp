#include <cppcms/cppcms_error.h>
#include <cppcms/http_content_type.h>
#include <cppcms/http_file.h>
#include <cppcms/http_request.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

#include "fake_request.h"
#include "http/form_decoder.h"
#include "tests/unit/platform/TemporaryFolder.h"

namespace {

namespace http = cppcms::http;

std::string Text(http::request::form_type const &fields) {
    std::string text;
    for (auto const &[name, value] : fields)
        text.append(name).append("=").append(value).append(";");
    return text;
}

TEST(FormDecoder, DecodesPairsUpToTheFirstMalformedOne) {
    using Result = cppcms::impl::form_result;
    std::tuple<std::string, char const *, Result> const cases[] = {
        {"", "", Result::complete},
        {"a=1&b=2", "a=1;b=2;", Result::complete},
        {"a=1&", "a=1;", Result::complete},
        {"a=&b==", "a=;b==;", Result::complete},
        {"a+b=c+d%20e%2bf", "a b=c d e+f;", Result::complete},
        {"b=2&a=1;b=2&a=c%zz%4", "a=1;b=2;a=czz4;b=2;", Result::complete},
        {"a=%41%c3%A9&b=%&c=%%41&d=%2", "a=A\xC3\xA9;b=;c=A;d=2;", Result::complete},
        {"a=1&bb&c=2", "a=1;", Result::malformed},
        {"a=1&&c=2", "a=1;", Result::malformed},
        {"=1", "", Result::malformed},
        {"&a=1", "", Result::malformed},
    };
    for (auto const &[text, shown, result] : cases) {
        cppcms::impl::form_fields fields;
        EXPECT_EQ(cppcms::impl::decode_form(text, fields), result) << text;
        EXPECT_EQ(Text(fields), shown) << text;
    }
}

TEST(FormDecoder, TakesALimitedNumberOfFields) {
    std::string text;
    for (std::size_t i = 0; i < cppcms::impl::max_form_fields; ++i)
        text += "a=&";
    cppcms::impl::form_fields most, more;
    EXPECT_EQ(cppcms::impl::decode_form(text, most), cppcms::impl::form_result::complete);
    EXPECT_EQ(cppcms::impl::decode_form(text + "a=", more), cppcms::impl::form_result::too_many);
}

TEST(Request, SeparatesQueryAndBody) {
    cppcms::service service(QuietSettings());
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
    cppcms::service service(QuietSettings());
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
    EXPECT_EQ(type.charset(), "UTF-8");
    EXPECT_EQ(type.parameter_by_key("b"), "q\"x");
    for (char const *malformed : {"", "text", "/html", "text/", "; a=b"})
        EXPECT_EQ(http::content_type(malformed).media_type(), "") << malformed;
}

TEST(UploadedFile, GoesToDiskBeyondItsLimitAndIsMovedFromThere) {
    TemporaryFolder const folder;
    auto const files = [&folder] {
        return std::distance(std::filesystem::directory_iterator(folder / ""), {});
    };
    http::file disk;
    disk.set_memory_limit(10);
    disk.set_temporary_directory(folder / "");
    disk.write_data() << "0123456789";
    EXPECT_EQ(files(), 0);
    disk.write_data() << "ab";
    ASSERT_EQ(files(), 1);
    EXPECT_EQ(std::filesystem::directory_iterator(folder / "")->status().permissions(),
              std::filesystem::perms(0600));
    EXPECT_THROW(disk.save_to(folder / "none/c"), cppcms::cppcms_error);
    disk.save_to(folder / "a");
    EXPECT_EQ(ContentOf(folder / "a"), "0123456789ab");
    EXPECT_EQ(files(), 1) << "moved, not copied";
}

}  // namespace
