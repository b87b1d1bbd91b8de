#include "net/http_cookie.h"

#include <cstring>

#include "base/fixed_string.h"
#include "base/words.h"
#include "config/debug_log.h"

bool zorn_http_set_text_field(char* field, int size, const char* text, const char* who) {
    if (!text) {
        field[0] = '\0';
        return true;
    }
    const size_t length = std::strlen(text);
    if (length >= static_cast<size_t>(size)) {
        if (zorn_client_debug_event_wanted(zorn_cat_warning)) {
            zorn_client_debug_eventf(zorn_cat_warning, "Error in %s - incoming string '%s' too long.", who, text);
        }
        return false;
    }
    std::memcpy(field, text, length + 1);
    return true;
}

bool zorn_http_cookie::set_key(const char* text) {
    return zorn_http_set_text_field(key, key_size, text, "zorn_http_cookie::set_key()");
}

bool zorn_http_cookie::set_domain(const char* text) {
    return zorn_http_set_text_field(domain, domain_size, text, "zorn_http_cookie::set_domain()");
}

bool zorn_http_cookie::set_value(const char* text) {
    return zorn_http_set_text_field(value, value_size, text, "zorn_http_cookie::set_value()");
}

zorn_http_cookie* zorn_http_cookie_list::find(const char* key) const {
    for (zorn_http_cookie* node = head; node; node = node->next) {
        if (word_equal(node->key, key)) return node;
    }
    return nullptr;
}

zorn_http_cookie* zorn_http_cookie_list::add_or_update(const char* key, const char* value, const char* domain,
                                                       int max_age, int secure) {
    zorn_http_cookie* node = find(key);
    if (!node) {
        node = new zorn_http_cookie;
        node->set_key(key);
        node->next = head;
        head = node;
    }
    if (!node->set_value(value)) node->set_value(nullptr);
    if (!node->set_domain(domain)) node->set_domain(nullptr);
    node->secure = secure;
    node->max_age = max_age;
    return node;
}

void zorn_http_cookie_list::remove(const char* key) {
    for (zorn_http_cookie** link = &head; *link; link = &(*link)->next) {
        if (word_equal((*link)->key, key)) {
            zorn_http_cookie* gone = *link;
            *link = gone->next;
            delete gone;
            return;
        }
    }
}

void zorn_http_cookie_list::clear() {
    while (head) {
        zorn_http_cookie* gone = head;
        head = gone->next;
        delete gone;
    }
}

int zorn_http_cookie_list::size() const {
    int count = 0;
    for (const zorn_http_cookie* node = head; node; node = node->next) ++count;
    return count;
}

void zorn_http_cookie_list::append_set_cookie_lines(zorn_fixed_string* out, const char* prefix) const {
    for (const zorn_http_cookie* node = head; node; node = node->next) {
        out->append("Set-Cookie: ");
        out->append(prefix);
        out->append(node->key);
        out->append("=");
        out->append(node->value);
        out->append("; Domain=");
        out->append(node->domain);
        out->append("; Path=/;");
        out->appendf(" Max-Age=%d;", node->max_age);
        out->append(" HttpOnly");
        if (node->secure) out->append("; Secure");
        out->append("\r\n");
    }
}
