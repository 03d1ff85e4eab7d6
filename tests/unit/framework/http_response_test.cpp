#include <cppcms/cppcms_error.h>
#include <cppcms/http_response.h>
#include <gtest/gtest.h>

#include <ostream>

#include "fake_request.h"

namespace {

namespace http = cppcms::http;

class ResponseTest : public testing::Test {
  protected:
    http::response &Response() { return request_.context().response(); }

    cppcms::service service_{QuietSettings()};
    FakeRequest request_{service_, {}};
};

constexpr char defaults[] = "Content-Type: text/html; charset=utf-8\r\nX-Powered-By: CppCMS/2.0.1\r\n\r\n";

TEST_F(ResponseTest, SortsHeadersAndKeepsAddedLinesBehindThem) {
    auto &response = Response();
    response.set_header("x-first", "1");
    response.set_header("X-FIRST", "2");
    response.set_header("Allow", "a\r\nInjected: b");
    response.set_header("X-Powered-By", "");
    response.add_header("B", "1");
    response.add_header("A", "2");
    response.add_header("status", "404 Gone");
    response.last_modified(784111777);
    response.set_plain_text_header();
    EXPECT_EQ(response.get_header("X-First"), "2");
    EXPECT_EQ(request_.Answer(),
              "Allow: a  Injected: b\r\nContent-Type: text/plain; charset=utf-8\r\n"
              "Last-Modified: Sun, 06 Nov 1994 08:49:37 GMT\r\nstatus: 404 Gone\r\n"
              "x-first: 2\r\nB: 1\r\nA: 2\r\n\r\n");
}

TEST_F(ResponseTest, IsFixedOnceItIsWrittenTo) {
    auto &response = Response();
    EXPECT_FALSE(response.some_output_was_written());
    response.out() << 1234567 << ' ' << 1234567.891 << ' ' << true;
    EXPECT_TRUE(response.some_output_was_written());
    response.status(404);
    response.content_type("a/b");
    EXPECT_THROW(response.io_mode(http::response::raw), cppcms::cppcms_error);
    EXPECT_EQ(request_.Answer(), defaults + std::string("1234567 1.23457e+06 1"));
    EXPECT_THROW(response.out(), cppcms::cppcms_error);
}

TEST_F(ResponseTest, TheErrorPageEscapesItsDetails) {
    Response().make_error_response(404, "why <not>");
    EXPECT_NE(request_.Answer().find("<h1>404 &mdash; Not Found</h1>\n    <p>why &lt;not&gt;</p>"),
              std::string::npos);
}

}  // namespace
