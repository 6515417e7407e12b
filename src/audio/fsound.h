#ifndef BV_AUDIO_FSOUND_H
#define BV_AUDIO_FSOUND_H

// The FSOUND sound calls the game makes, with their usual meaning, played
// through OpenAL Soft and decoded (WAV and MP3) by libsndfile. Every call made
// before a successful FSOUND_Init, or with a bad channel or sample, does
// nothing and reports failure.
//
// FSOUND_PlaySound returns a handle to that one playing of the sound; the
// other channel calls take such a handle, a channel's own number (0 up to the
// channels opened) for whatever it plays now, or FSOUND_ALL. Once the channel
// has been given another sound, the old handle reaches nothing.

#define FSOUND_FREE (-1)
#define FSOUND_UNMANAGED (-2)
#define FSOUND_ALL (-3)

#define FSOUND_LOOP_OFF 0x00000001
#define FSOUND_LOOP_NORMAL 0x00000002
#define FSOUND_8BITS 0x00000008
#define FSOUND_HW2D 0x00080000

struct FSOUND_SAMPLE;

signed char FSOUND_Init(int mixrate, int maxchannels, unsigned int flags);
void FSOUND_Close();

FSOUND_SAMPLE* FSOUND_Sample_Load(int index, const char* name, unsigned int mode, int offset);
void FSOUND_Sample_Free(FSOUND_SAMPLE* sample);

int FSOUND_PlaySound(int channel, FSOUND_SAMPLE* sample);
signed char FSOUND_StopSound(int channel);
signed char FSOUND_IsPlaying(int channel);
unsigned int FSOUND_GetCurrentPosition(int channel);
signed char FSOUND_SetVolume(int channel, int volume);
signed char FSOUND_SetFrequency(int channel, int frequency);
signed char FSOUND_SetPan(int channel, int pan);
signed char FSOUND_SetPaused(int channel, signed char paused);
signed char FSOUND_GetPaused(int channel);
void FSOUND_SetSFXMasterVolume(int volume);

#endif
