#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <cstdio>
#include <string>

#include "net/ssl_context.h"
#include "testworld/certificate.h"
#include "tests/net/net_test_support.h"

namespace {

// The warning exactly as logged: the length in four columns, then the export flag.
std::string dh_warning(const char* kind, int key_length, int export_flag) {
    char line[128];
    std::snprintf(line, sizeof line, "Warning in get_tmp_dh_callback(), %s key length %4d, export %d.", kind,
                  key_length, export_flag);
    return line;
}

TEST(SslContext, DhGroupsByKeyLength) {
    const struct {
        int key_length;
        bool has_group;
        bool short_warning;
    } rows[] = {
        {512, true, true},   {768, true, true},   {1000, false, true}, {1024, true, false}, {1536, true, false},
        {2048, true, false}, {3072, true, false}, {4096, true, false}, {8192, false, false}, {0, false, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.key_length);
        size_t before = net_test::debug_log_size();
        EVP_PKEY* group = get_tmp_dh_callback(nullptr, 0, row.key_length);
        std::string logged = net_test::debug_log_text().substr(before);
        EXPECT_EQ(group != nullptr, row.has_group);
        EXPECT_EQ(logged.find(dh_warning("requested short", row.key_length, 0)) != std::string::npos,
                  row.short_warning);
        EXPECT_EQ(logged.find(dh_warning("unsupported", row.key_length, 0)) != std::string::npos, !row.has_group);
        if (!group) continue;
        EXPECT_EQ(EVP_PKEY_get_bits(group), row.key_length);
        before = net_test::debug_log_size();
        EXPECT_EQ(get_tmp_dh_callback(nullptr, 1, row.key_length), group) << "built once, then kept";
        logged = net_test::debug_log_text().substr(before);
        EXPECT_EQ(logged.find(dh_warning("requested short", row.key_length, 1)) != std::string::npos,
                  row.short_warning);
    }
}

TEST(SslContext, CipherListsAndFileNames) {
    zorn_ssl_select_anonymous_ciphers();
    EXPECT_STREQ(zorn_ssl_cipher_list(), "aNULL:HIGH:@STRENGTH");
    zorn_ssl_select_unauthenticated_ciphers();
    EXPECT_STREQ(zorn_ssl_cipher_list(), "HIGH:@STRENGTH");
    zorn_ssl_select_default_ciphers();
    EXPECT_STREQ(zorn_ssl_cipher_list(), "HIGH:@STRENGTH:!aNULL");
    for (size_t length : {511, 512, 600}) {
        const std::string name(length, 'k');
        zorn_ssl_set_private_key_file(name.c_str());
        EXPECT_EQ(std::string(zorn_ssl_private_key_file()), name.substr(0, 511));
    }
    zorn_ssl_set_private_key_file(nullptr);
    EXPECT_STREQ(zorn_ssl_private_key_file(), "");
}

int hook_calls = 0;
void count_hook() { hook_calls++; }

TEST(SslContext, StartupLoadsNamedFilesAndReportsTheOneThatFails) {
    net_test::temp_dir dir;
    testworld::server_identity identity;
    ASSERT_TRUE(identity.generate());
    ASSERT_TRUE(identity.write_pem_files(dir.file("key.pem"), dir.file("cert.pem")));
    const std::string key = dir.file("key.pem"), cert = dir.file("cert.pem"), missing = dir.file("missing.pem");
    const struct {
        const char* chain;
        const char* certificate;
        const char* key;
        const char* failure_line;  // null: startup succeeds
    } rows[] = {
        {cert.c_str(), cert.c_str(), key.c_str(), nullptr},
        {missing.c_str(), nullptr, nullptr, "unable to load server certificate chain from file"},
        {nullptr, missing.c_str(), nullptr, "unable to load server certificate from file"},
        {nullptr, cert.c_str(), missing.c_str(), "unable to load server private key from file"},
    };
    zorn_ssl_set_startup_hook(count_hook);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.failure_line ? row.failure_line : "all files good");
        zorn_ssl_set_certificate_chain_file(row.chain);
        zorn_ssl_set_certificate_file(row.certificate);
        zorn_ssl_set_private_key_file(row.key);
        const size_t before = net_test::debug_log_size();
        const int hooks_before = hook_calls;
        EXPECT_EQ(zorn_ssl_startup(), row.failure_line == nullptr);
        EXPECT_EQ(hook_calls, hooks_before + 1);
        if (row.failure_line) {
            const std::string expected = std::string("Error in init_ssl(), ") + row.failure_line + " '" + missing + "'.";
            EXPECT_NE(net_test::debug_log_text().find(expected, before), std::string::npos) << expected;
        }
    }
    // Back to the client's own setup for the other tests of this binary.
    zorn_ssl_set_startup_hook(nullptr);
    zorn_ssl_set_certificate_chain_file(nullptr);
    zorn_ssl_set_certificate_file(nullptr);
    zorn_ssl_set_private_key_file(nullptr);
    EXPECT_TRUE(zorn_ssl_startup());
    EXPECT_NE(zorn_ssl_context(), nullptr);
}

}  // namespace
