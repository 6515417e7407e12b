#include "audio/fsound.h"

#include <AL/al.h>
#include <AL/alc.h>
#include <sndfile.h>

#include <cmath>
#include <vector>

struct FSOUND_SAMPLE {
    ALuint buffer;
    int rate;          // the sample's own rate: frequency 'rate' plays it at its pitch
    unsigned int mode;
    bool managed;
};

namespace {

const int kMaxChannels = 256;

struct Channel {
    ALuint source;
    FSOUND_SAMPLE* sample;
};

ALCdevice* device = nullptr;
ALCcontext* context = nullptr;
Channel channels[kMaxChannels];
int nchannels = 0;
std::vector<FSOUND_SAMPLE*> samples;

bool valid(int channel) {
    return context && channel >= 0 && channel < nchannels;
}

// Runs op on one channel, or on every channel for FSOUND_ALL.
template <typename Op>
signed char each(int channel, Op op) {
    if (!context) return 0;
    if (channel == FSOUND_ALL) {
        for (int i = 0; i < nchannels; i++) op(channels[i]);
        return 1;
    }
    if (!valid(channel)) return 0;
    op(channels[channel]);
    return 1;
}

bool busy(const Channel& c) {
    ALint state;
    alGetSourcei(c.source, AL_SOURCE_STATE, &state);
    return state == AL_PLAYING || state == AL_PAUSED;
}

// Pan 0 is hard left, 128 the centre, 255 hard right: the source sits on a
// half circle in front of the listener, so its distance and loudness stay the same.
void place(const Channel& c, int pan) {
    float x = (pan - 128) / 127.0f;
    if (x < -1) x = -1;
    if (x > 1) x = 1;
    alSource3f(c.source, AL_POSITION, x, 0, -std::sqrt(1 - x * x));
}

}  // namespace

signed char FSOUND_Init(int mixrate, int maxchannels, unsigned int) {
    if (context) return 1;
    device = alcOpenDevice(nullptr);
    if (!device) return 0;
    const ALCint attributes[] = {ALC_FREQUENCY, mixrate, ALC_MONO_SOURCES, maxchannels, 0};
    context = alcCreateContext(device, attributes);
    if (!context || !alcMakeContextCurrent(context)) {
        if (context) alcDestroyContext(context);
        alcCloseDevice(device);
        context = nullptr;
        device = nullptr;
        return 0;
    }
    // Volume falls with nothing but FSOUND_SetVolume: no distance model.
    alDistanceModel(AL_NONE);
    nchannels = 0;
    if (maxchannels > kMaxChannels) maxchannels = kMaxChannels;
    for (int i = 0; i < maxchannels; i++) {
        alGetError();
        alGenSources(1, &channels[i].source);
        if (alGetError() != AL_NO_ERROR) break;
        alSourcei(channels[i].source, AL_SOURCE_RELATIVE, AL_TRUE);
        channels[i].sample = nullptr;
        nchannels++;
    }
    return 1;
}

void FSOUND_Close() {
    if (!context) return;
    for (int i = 0; i < nchannels; i++) {
        alSourceStop(channels[i].source);
        alSourcei(channels[i].source, AL_BUFFER, 0);
        alDeleteSources(1, &channels[i].source);
    }
    nchannels = 0;
    for (FSOUND_SAMPLE* s : samples) {
        alDeleteBuffers(1, &s->buffer);
        delete s;
    }
    samples.clear();
    alcMakeContextCurrent(nullptr);
    alcDestroyContext(context);
    alcCloseDevice(device);
    context = nullptr;
    device = nullptr;
}

FSOUND_SAMPLE* FSOUND_Sample_Load(int index, const char* name, unsigned int mode, int) {
    if (!context || !name) return nullptr;
    SF_INFO info = {};
    SNDFILE* file = sf_open(name, SFM_READ, &info);
    if (!file) return nullptr;
    if (info.channels < 1 || info.channels > 2 || info.frames <= 0 || info.samplerate <= 0 ||
        info.frames > (sf_count_t)info.samplerate * 600) {
        sf_close(file);
        return nullptr;
    }
    std::vector<short> pcm((size_t)info.frames * info.channels);
    sf_count_t got = sf_readf_short(file, pcm.data(), info.frames);
    sf_close(file);
    if (got <= 0) return nullptr;

    auto* sample = new FSOUND_SAMPLE{0, info.samplerate, mode, index != FSOUND_UNMANAGED};
    alGetError();
    alGenBuffers(1, &sample->buffer);
    alBufferData(sample->buffer, info.channels == 2 ? AL_FORMAT_STEREO16 : AL_FORMAT_MONO16, pcm.data(),
                 (ALsizei)(got * info.channels * sizeof(short)), info.samplerate);
    if (alGetError() != AL_NO_ERROR) {
        alDeleteBuffers(1, &sample->buffer);
        delete sample;
        return nullptr;
    }
    samples.push_back(sample);
    return sample;
}

void FSOUND_Sample_Free(FSOUND_SAMPLE* sample) {
    if (!context || !sample) return;
    for (size_t i = 0; i < samples.size(); i++) {
        if (samples[i] != sample) continue;
        for (int c = 0; c < nchannels; c++) {
            if (channels[c].sample != sample) continue;
            alSourceStop(channels[c].source);
            alSourcei(channels[c].source, AL_BUFFER, 0);
            channels[c].sample = nullptr;
        }
        alDeleteBuffers(1, &sample->buffer);
        delete sample;
        samples.erase(samples.begin() + (long)i);
        return;
    }
}

static bool known(FSOUND_SAMPLE* sample) {
    for (FSOUND_SAMPLE* s : samples)
        if (s == sample) return true;
    return false;
}

int FSOUND_PlaySound(int channel, FSOUND_SAMPLE* sample) {
    if (!context || !known(sample)) return -1;
    int c = -1;
    if (channel == FSOUND_FREE) {
        for (int i = 0; i < nchannels && c < 0; i++)
            if (!busy(channels[i])) c = i;
    } else if (valid(channel)) {
        c = channel;
    }
    if (c < 0) return -1;
    Channel& ch = channels[c];
    alSourceStop(ch.source);
    alSourcei(ch.source, AL_BUFFER, (ALint)sample->buffer);
    alSourcei(ch.source, AL_LOOPING, (sample->mode & FSOUND_LOOP_NORMAL) ? AL_TRUE : AL_FALSE);
    alSourcef(ch.source, AL_GAIN, 1.0f);
    alSourcef(ch.source, AL_PITCH, 1.0f);
    place(ch, 128);
    ch.sample = sample;
    alSourcePlay(ch.source);
    return c;
}

signed char FSOUND_StopSound(int channel) {
    return each(channel, [](Channel& c) { alSourceStop(c.source); });
}

signed char FSOUND_IsPlaying(int channel) {
    if (!valid(channel)) return 0;
    return busy(channels[channel]) ? 1 : 0;
}

unsigned int FSOUND_GetCurrentPosition(int channel) {
    if (!valid(channel)) return 0;
    ALint offset = 0;
    alGetSourcei(channels[channel].source, AL_SAMPLE_OFFSET, &offset);
    return (unsigned int)offset;
}

signed char FSOUND_SetVolume(int channel, int volume) {
    if (volume < 0) volume = 0;
    if (volume > 255) volume = 255;
    float gain = volume / 255.0f;
    return each(channel, [gain](Channel& c) { alSourcef(c.source, AL_GAIN, gain); });
}

signed char FSOUND_SetFrequency(int channel, int frequency) {
    return each(channel, [frequency](Channel& c) {
        if (!c.sample || frequency <= 0) return;
        // OpenAL Soft accepts pitches up to 255 times the sample's own rate.
        float pitch = (float)frequency / (float)c.sample->rate;
        if (pitch > 255) pitch = 255;
        alSourcef(c.source, AL_PITCH, pitch);
    });
}

signed char FSOUND_SetPan(int channel, int pan) {
    return each(channel, [pan](Channel& c) { place(c, pan); });
}

signed char FSOUND_SetPaused(int channel, signed char paused) {
    return each(channel, [paused](Channel& c) {
        ALint state;
        alGetSourcei(c.source, AL_SOURCE_STATE, &state);
        if (paused && state == AL_PLAYING) alSourcePause(c.source);
        if (!paused && state == AL_PAUSED) alSourcePlay(c.source);
    });
}

void FSOUND_SetSFXMasterVolume(int volume) {
    if (!context) return;
    if (volume < 0) volume = 0;
    if (volume > 255) volume = 255;
    alListenerf(AL_GAIN, volume / 255.0f);
}
