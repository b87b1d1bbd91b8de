// Cookies: the setters and their limits, add or update on both lists, the "Cookie:" header with
// and without a prefix, and the "Set-Cookie: " lines the builders add.

#include "net/http_cookie.h"

#include <gtest/gtest.h>

#include <string>

#include "net/http_processor.h"
#include "tests/support/log_capture.h"

namespace {

using processor = zorn_http_data_processor_oline;

std::string received(const processor& p) {
    std::string out;
    for (const zorn_http_cookie* c = p.received_cookies().first(); c; c = c->next) {
        out += std::string(out.empty() ? "" : " ") + c->key + "=" + c->value;
    }
    return out;
}

TEST(HttpCookie, SettersKeepTheirLimits) {
    struct row {
        const char* name;
        bool (zorn_http_cookie::*set)(const char*);
        const char* (zorn_http_cookie::*get)() const;
        size_t size;
    };
    const row rows[] = {
        {"set_key", &zorn_http_cookie::set_key, &zorn_http_cookie::get_key, 64},
        {"set_domain", &zorn_http_cookie::set_domain, &zorn_http_cookie::get_domain, 64},
        {"set_value", &zorn_http_cookie::set_value, &zorn_http_cookie::get_value, 256},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.name);
        zorn_http_cookie cookie;
        EXPECT_EQ(cookie.secure, 1);
        EXPECT_EQ(cookie.max_age, 300);
        const std::string fits(r.size - 1, 'f');
        const std::string too_long(r.size, 'L');
        EXPECT_TRUE((cookie.*r.set)(fits.c_str()));
        log_capture log(2);
        EXPECT_FALSE((cookie.*r.set)(too_long.c_str()));
        EXPECT_EQ((cookie.*r.get)(), fits) << "the field stays as it was";
        EXPECT_EQ(log.text(), std::string("Error in zorn_http_cookie::") + r.name + "() - incoming string '" + too_long +
                                  "' too long.\n");
        EXPECT_TRUE((cookie.*r.set)(nullptr));
        EXPECT_STREQ((cookie.*r.get)(), "");
    }
    processor p;
    EXPECT_TRUE(p.set_cookie_prefix(std::string(31, 'p').c_str()));
    log_capture log(2);
    EXPECT_FALSE(p.set_cookie_prefix(std::string(32, 'q').c_str()));
    EXPECT_EQ(p.get_cookie_prefix(), std::string(31, 'p'));
    EXPECT_EQ(log.text(), "Error in zorn_http_cookie::set_cookie_prefix() - incoming string '" + std::string(32, 'q') +
                              "' too long.\n");
}

TEST(HttpCookie, CookieHeaderPairs) {
    struct row {
        const char* prefix;
        const char* value;
        int taken;
        const char* cookies;  // newest first
    };
    const row rows[] = {
        {"", "a=1; b=2", 2, "b=2 a=1"},
        {"", "a=1=2", 1, "a=1=2"},
        {"", "  ;; a=;b ;c=3;", 3, "c=3 b= a="},
        {"", "A=1; a=2", 2, "A=2"},
        {"zz_", "zz_a=1; b=2", 1, "a=1"},
        {"zz_", "ZZ_a=1; zz=2; zz_=3", 2, "=3 a=1"},
        {"", "", 0, ""},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.value);
        processor p;
        p.set_cookie_prefix(r.prefix);
        EXPECT_EQ(p.parse_cookie_header(r.value), r.taken);
        EXPECT_EQ(received(p), r.cookies);
        for (const zorn_http_cookie* c = p.received_cookies().first(); c; c = c->next) {
            EXPECT_EQ(c->secure, 0);
            EXPECT_EQ(c->max_age, 0);
            EXPECT_STREQ(c->domain, "");
        }
    }
    processor p;
    EXPECT_EQ(p.parse_cookie_header(nullptr), 0);
}

TEST(HttpCookie, OverlongPartsAreLoggedAndTheCookieStays) {
    processor p;
    const std::string name(64, 'n');
    const std::string value(256, 'v');
    log_capture log(2);
    EXPECT_EQ(p.parse_cookie_header(("x=" + value + "; " + name + "=1").c_str()), 2);
    EXPECT_EQ(received(p), "=1 x=");
    EXPECT_EQ(log.text(), "Error in zorn_http_cookie::set_value() - incoming string '" + value +
                              "' too long.\nError in zorn_http_cookie::set_key() - incoming string '" + name +
                              "' too long.\n");
}

TEST(HttpCookie, AddUpdateFindDelete) {
    processor p;
    p.add_cookie("session", "one", "a.example", 60, 1);
    p.add_cookie("SESSION", "two", nullptr, 120, 0);
    ASSERT_EQ(p.cookies_to_send().size(), 1);
    const zorn_http_cookie* c = p.cookies_to_send().first();
    EXPECT_STREQ(c->key, "session") << "the key stays as first given";
    EXPECT_STREQ(c->value, "two");
    EXPECT_STREQ(c->domain, "");
    EXPECT_EQ(c->max_age, 120);
    EXPECT_EQ(c->secure, 0);
    EXPECT_STREQ(p.find_cookie_to_send("Session"), "two");
    EXPECT_EQ(p.find_received_cookie("session"), nullptr) << "the lists are apart";

    p.add_cookie_domain("d", "b.example");
    EXPECT_STREQ(p.find_cookie_to_send("d"), "");
    EXPECT_STREQ(p.cookies_to_send().first()->domain, "b.example");

    p.add_received_cookie("a", "1");
    p.add_received_cookie("b", "2");
    p.add_received_cookie("a", "3");
    EXPECT_EQ(received(p), "b=2 a=3");
    p.delete_received_cookie("A");
    EXPECT_EQ(received(p), "b=2");
    p.delete_received_cookie("zzz");
    EXPECT_EQ(received(p), "b=2");
}

TEST(HttpCookie, SetCookieLinesInRequestsAndResponses) {
    processor p;
    p.set_cookie_prefix("pre_");
    p.add_cookie("a", "1", nullptr, 60, 0);
    p.add_cookie("b", "2", "x.example", 300, 1);
    const std::string lines =
        "Set-Cookie: pre_b=2; Domain=x.example; Path=/; Max-Age=300; HttpOnly; Secure\r\n"
        "Set-Cookie: pre_a=1; Domain=; Path=/; Max-Age=60; HttpOnly\r\n";
    ASSERT_TRUE(p.start_http_GET("h", "/"));
    char block[4096];
    int got = p.get_data_to_send(block, sizeof block);
    EXPECT_EQ(std::string(block, static_cast<size_t>(got)),
              "GET / HTTP/1.1\r\nHost: h\r\nContent-Length: 0\r\nAccept-Encoding: identity\r\n" + lines + "\r\n");

    processor server;
    server.add_cookie("a", "1", nullptr, 60, 0);
    ASSERT_EQ(server.header_line_parse("GET / HTTP/1.1"), 0);
    ASSERT_TRUE(server.send_response(404, zorn_http_content_text_plain, 0, "Not Found"));
    got = server.get_data_to_send(block, sizeof block);
    EXPECT_EQ(std::string(block, static_cast<size_t>(got)),
              "HTTP/1.1 404 Not Found\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: 0\r\n"
              "Set-Cookie: a=1; Domain=; Path=/; Max-Age=60; HttpOnly\r\n\r\n");
}

}  // namespace
