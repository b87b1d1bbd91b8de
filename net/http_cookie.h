#pragma once
// One cookie as the HTTP processor keeps it: a list node with fixed text fields. The processor
// owns the nodes of its two lists (received, and to send).

struct zorn_fixed_string;

struct zorn_http_cookie {
    static constexpr int key_size = 64;
    static constexpr int domain_size = 64;
    static constexpr int value_size = 256;

    // Each refuses a text that does not fit (the field stays as it was) and logs it; null empties.
    bool set_key(const char* text);
    bool set_domain(const char* text);
    bool set_value(const char* text);

    const char* get_key() const { return key; }
    const char* get_domain() const { return domain; }
    const char* get_value() const { return value; }

    zorn_http_cookie* next = nullptr;
    int secure = 1;
    int max_age = 300;
    char key[key_size] = "";
    char domain[domain_size] = "";
    char value[value_size] = "";
};

// Stores text in field (size bytes) when it fits, otherwise logs "Error in <who> - incoming
// string '<text>' too long." at category 2 and leaves the field alone. Null empties the field.
bool zorn_http_set_text_field(char* field, int size, const char* text, const char* who);

// A singly linked list of cookies, newest first.
class zorn_http_cookie_list {
public:
    zorn_http_cookie_list() = default;
    ~zorn_http_cookie_list() { clear(); }
    zorn_http_cookie_list(const zorn_http_cookie_list&) = delete;
    zorn_http_cookie_list& operator=(const zorn_http_cookie_list&) = delete;

    // Replaces value, domain, secure and max_age of the node with this key, or puts a new node at
    // the front. A value or domain that does not fit leaves that field empty.
    zorn_http_cookie* add_or_update(const char* key, const char* value, const char* domain, int max_age,
                                    int secure);
    zorn_http_cookie* find(const char* key) const;
    // Removes the first node with this key.
    void remove(const char* key);
    void clear();
    int size() const;
    zorn_http_cookie* first() const { return head; }

    // The "Set-Cookie: " lines of every node, front first.
    void append_set_cookie_lines(zorn_fixed_string* out, const char* prefix) const;

private:
    zorn_http_cookie* head = nullptr;
};
