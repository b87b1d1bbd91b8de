#include "base/random.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <initializer_list>

#include "base/fixed_string.h"
#include "base/threads.h"

namespace {

constexpr uint32_t initial_words[8] = {123456789u, 920370032u, 0xe036180fu, 0x863b2622u,
                                       1475571481u, 0x8b808da4u, 1600748723u, 1240767094u};
constexpr uint32_t alternate_words[8] = {123456789u,  1526889226u, 0x7c46393bu, 1314849656u,
                                         0x98bb0f51u, 0xdce39116u, 28277975u,   0xbfb51364u};
constexpr uint32_t initial_carry = 362436u;
constexpr uint64_t multiplier = 809430660u;
constexpr int small_range_limit = 10000;
constexpr int max_dice = 500;

const char text_alphabet[] = "0123456789abcdefghijklmnopqrstuv";
const char hex_alphabet[] = "0123456789abcdef";
const char base64_alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void load(zorn_random_state* s, const uint32_t (&words)[8]) {
    std::memcpy(s->words, words, sizeof s->words);
    std::memcpy(s->saved_words, words, sizeof s->saved_words);
    s->carry = s->saved_carry = initial_carry;
    s->index = s->saved_index = 0;
}

void save(zorn_random_state* s) {
    s->index = 0;
    std::memcpy(s->saved_words, s->words, sizeof s->words);
    s->saved_carry = s->carry;
    s->saved_index = 0;
}

// The linear congruential step of Numerical Recipes, folded into each word.
void mixing(zorn_random_state* s, uint32_t n) {
    uint32_t x = n;
    for (uint32_t& word : s->words) {
        x = x * 1664525u + 1013904223u;
        word ^= x;
    }
}

void pass(zorn_random_state* s) {
    s->index = 0;
    for (int i = 0; i < 8; ++i) random_next(s);
}

int throw_one(zorn_random_state* s, int n) {
    const uint32_t w = random_next(s);
    if (n <= small_range_limit) return static_cast<int>(static_cast<int32_t>(w >> 16) * n / 65536) + 1;
    const uint32_t v = random_next(s);
    return static_cast<int>(std::trunc(n * static_cast<double>((w >> 16) ^ v) * 0x1p-32)) + 1;
}

void append_from_top_bits(zorn_random_state* s, zorn_fixed_string* out, int count, int bits, const char* alphabet) {
    for (int i = 0; i < count; ++i) out->append_char(alphabet[random_next(s) >> (32 - bits)]);
}

zorn_random_state make_initialised() {
    zorn_random_state s;
    random_init(&s);
    return s;
}

zorn_random_state client_state = make_initialised();
zorn_random_state painter_state = make_initialised();
zorn_random_state process_state = make_initialised();

}  // namespace

void random_init(zorn_random_state* state) { load(state, initial_words); }
void random_init_alternate(zorn_random_state* state) { load(state, alternate_words); }

void random_reset(zorn_random_state* state) {
    std::memcpy(state->words, state->saved_words, sizeof state->words);
    state->carry = state->saved_carry;
    state->index = state->saved_index;
}

void random_seed(zorn_random_state* state, uint32_t n) {
    random_init(state);
    mixing(state, n);
    pass(state);
    save(state);
}

void random_seed2(zorn_random_state* state, uint32_t a, uint32_t b) {
    random_init(state);
    mixing(state, a);
    pass(state);
    mixing(state, b);
    pass(state);
    save(state);
}

void random_seed3(zorn_random_state* state, uint32_t a, uint32_t b, uint32_t c) {
    random_init(state);
    for (uint32_t n : {a, b, c}) {
        mixing(state, n);
        pass(state);
    }
    save(state);
}

void random_mix(zorn_random_state* state, uint32_t n) {
    mixing(state, n);
    for (int i = 0; i < 8; ++i) random_next(state);
}

void random_stir(zorn_random_state* state, uint32_t n) {
    state->words[0] ^= n;
    for (int i = 0; i < 17; ++i) random_next(state);
}

uint32_t random_next(zorn_random_state* state) {
    const uint64_t t = state->words[state->index] * multiplier + state->carry;
    state->words[state->index] = static_cast<uint32_t>(t);
    state->carry = static_cast<uint32_t>(t >> 32);
    const uint32_t result = state->words[state->index];
    state->index = (state->index + 1) & 7;
    return result;
}

int random_number(zorn_random_state* state, int n) { return throw_one(state, n); }

double random_float(zorn_random_state* state) {
    return static_cast<int32_t>(random_next(state) >> 1) * 4.656612873077393e-10;
}

int random_dice(zorn_random_state* state, int count, int sides) {
    if (count < 1 || count > max_dice) return 0;
    int sum = 0;
    for (int i = 0; i < count; ++i) sum += throw_one(state, sides);
    return sum;
}

void random_text_append(zorn_random_state* state, zorn_fixed_string* out, int count) {
    append_from_top_bits(state, out, count, 5, text_alphabet);
}

void random_seed_from_system(zorn_random_state* state) {
    const int64_t now = zorn_gettimeofday_useconds();
    unsigned char bytes[32];
    std::memcpy(bytes, &now, sizeof now);
    for (size_t i = 0; i < sizeof now; ++i) random_mix(state, static_cast<uint32_t>(static_cast<signed char>(bytes[i])));
    FILE* source = std::fopen("/dev/urandom", "rb");
    if (!source) return;
    const size_t got = std::fread(bytes, 1, sizeof bytes, source);
    std::fclose(source);
    for (size_t i = 0; i < got; ++i) random_mix(state, static_cast<uint32_t>(static_cast<signed char>(bytes[i])));
}

zorn_random_state* zorn_client_random() { return &client_state; }
zorn_random_state* zorn_painter_random() { return &painter_state; }

int random_below(int n) {
    return static_cast<int>(((random_next(&client_state) & 0xffffu) * static_cast<uint64_t>(n)) >> 16);
}
double random_float() { return random_float(&client_state); }
uint32_t random_next() { return random_next(&client_state); }
void random_time_seed() { random_mix(&client_state, static_cast<uint32_t>(time(nullptr))); }

int zorn_random_number(int n) { return random_number(&process_state, n); }
int zorn_random_dice(int count, int sides) { return random_dice(&process_state, count, sides); }
void zorn_random_hex_append(zorn_fixed_string* out, int count) {
    append_from_top_bits(&process_state, out, count, 4, hex_alphabet);
}
void zorn_random_text_append(zorn_fixed_string* out, int count) {
    append_from_top_bits(&process_state, out, count, 5, text_alphabet);
}
void zorn_random_base64_append(zorn_fixed_string* out, int count) {
    append_from_top_bits(&process_state, out, count, 6, base64_alphabet);
}
