#pragma once
// The one writable directory where all the client's files live.

bool zorn_client_set_up_config_directory(const char* base_name);
bool zorn_client_cd_to_config_directory();
// The path without a trailing slash, or null before set-up.
const char* zorn_client_config_directory();
