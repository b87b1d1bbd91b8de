#pragma once
// A lag-8 multiply-with-carry generator. Its arithmetic is part of what the screen shows: the
// painters reset and re-mix it to draw the same speckle from the same seed every time.

#include <cstdint>

struct zorn_fixed_string;

struct zorn_random_state {
    int index;
    int saved_index;
    uint32_t saved_words[8];
    uint32_t words[8];
    uint32_t saved_carry;
    uint32_t carry;
};

void random_init(zorn_random_state* state);
void random_init_alternate(zorn_random_state* state);
void random_reset(zorn_random_state* state);
void random_seed(zorn_random_state* state, uint32_t n);
void random_seed2(zorn_random_state* state, uint32_t a, uint32_t b);
void random_seed3(zorn_random_state* state, uint32_t a, uint32_t b, uint32_t c);
void random_mix(zorn_random_state* state, uint32_t n);
void random_stir(zorn_random_state* state, uint32_t n);
uint32_t random_next(zorn_random_state* state);
int random_number(zorn_random_state* state, int n);
double random_float(zorn_random_state* state);
int random_dice(zorn_random_state* state, int count, int sides);
void random_text_append(zorn_random_state* state, zorn_fixed_string* out, int count);
void random_seed_from_system(zorn_random_state* state);

// The client's general generator (GUI thread), seeded with the time at start-up.
zorn_random_state* zorn_client_random();
// The painters' generator (GUI thread): never seeded with the time.
zorn_random_state* zorn_painter_random();

int random_below(int n);
double random_float();
uint32_t random_next();
void random_time_seed();

// Process-wide generator for the forms below.
int zorn_random_number(int n);
int zorn_random_dice(int count, int sides);
void zorn_random_hex_append(zorn_fixed_string* out, int count);
void zorn_random_text_append(zorn_fixed_string* out, int count);
void zorn_random_base64_append(zorn_fixed_string* out, int count);
