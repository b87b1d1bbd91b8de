#pragma once
// The output stream: 44.1 kHz, 16-bit, interleaved stereo from the default device, fed by the
// mixer. A failure of the sound system is a debug line and silence, never an error for the player.
// Main thread only.

// 1 when the stream runs; 0 (audio stays off, PortAudio terminated) when it can't be opened.
int start_audio();
void stop_audio();
// Stops and closes the stream; nothing when there is none. Also the last step of shutdown.
void release_audio();
