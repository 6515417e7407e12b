// The FSOUND calls played through OpenAL Soft, the files decoded by libsndfile.

#include "audio/fsound.h"

#define AL_ALEXT_PROTOTYPES
#include <AL/al.h>
#include <AL/alc.h>
#include <AL/alext.h>
#include <sndfile.h>

#include <cmath>
#include <cstdlib>
#include <vector>

struct FSOUND_SAMPLE {
    ALuint buffer;
    int rate;          // the sample's own rate: frequency 'rate' plays it at its pitch
    unsigned int mode;
    bool managed;
    bool stereo;
    float peak[2];     // the loudest it gets on the left and on the right, 0..1
};

namespace {

const int kMaxChannels = 256;

// A handle names one playing of one sound, not just a channel: its lower bits
// are the channel, its upper bits how many sounds that channel had been given
// when this one started. A kart keeps its handles from race to race, the menu
// its tunes' from visit to visit; by then the channel may play somebody else's
// sound, which an old handle must not stop, mute or mistake for its own.
const int kChannelBits = 12;
const int kChannelMask = (1 << kChannelBits) - 1;
const unsigned int kPlaysWrap = 1u << (31 - kChannelBits);  // keeps handles positive

struct Channel {
    ALuint source;
    unsigned int plays;  // how many sounds it has been given: the handle's upper part
    FSOUND_SAMPLE* sample;
    float gain;     // as FSOUND_SetVolume set it, 0..1
    float x;        // where place() put it: -1 hard left .. 1 hard right
    bool sounding;  // started, and neither stopped nor paused since
    bool starting;  // sounding in our records, not yet handed to the mixer
};

ALCdevice* device = nullptr;
ALCcontext* context = nullptr;
Channel channels[kMaxChannels];
int nchannels = 0;
std::vector<FSOUND_SAMPLE*> samples;

// Headroom. Six karts revving off the grid add up to more than full scale,
// and OpenAL Soft's own limiter only holds the sum at full scale: at its
// float output (the default) its peaks sit at exactly 1.0, which the sound
// server clips. So the listener's gain is the master volume times `scale`,
// which keeps the loudest the mix could possibly get below kCeiling: every
// sounding channel at its sample's peak, on the side it is panned to, all in
// step. Whatever fits under the ceiling (a lone kart, the menu tune) plays
// exactly as loud as before, and the limiter is left with nothing to do.
const float kCeiling = 0.95f;
float master = 1.0f;
float scale = 1.0f;

// How much of a centred-to-hard-panned mono source reaches one side, by how far
// it sits towards that side (-1 away .. 1 towards, in eighths): OpenAL Soft's
// stereo panning as measured, each step rounded up to the larger end.
const float kPanLaw[17] = {0.00f, 0.00f, 0.06f, 0.13f, 0.22f, 0.31f, 0.41f, 0.51f, 0.60f,
                           0.69f, 0.78f, 0.86f, 0.93f, 0.98f, 1.00f, 1.00f, 1.00f};

float panLaw(float towards) {
    int step = (int)std::ceil((towards + 1) * 8);
    if (step < 0) step = 0;
    if (step > 16) step = 16;
    return kPanLaw[step];
}

int handle(int channel) {
    return (int)(channels[channel].plays << kChannelBits) | channel;
}

// The channel a handle names while that channel still holds the handle's
// sound, or the channel of that number whatever it plays now; -1 for anything else.
int resolve(int h) {
    if (!context || h < 0) return -1;
    if (h < nchannels) return h;
    int c = h & kChannelMask;
    if (c >= nchannels || channels[c].plays == 0 || handle(c) != h) return -1;
    return c;
}

// Runs op on the handle's channel, or on every channel for FSOUND_ALL.
template <typename Op>
signed char each(int h, Op op) {
    if (!context) return 0;
    if (h == FSOUND_ALL) {
        for (int i = 0; i < nchannels; i++) op(channels[i]);
        return 1;
    }
    int c = resolve(h);
    if (c < 0) return 0;
    op(channels[c]);
    return 1;
}

bool busy(const Channel& c) {
    ALint state;
    alGetSourcei(c.source, AL_SOURCE_STATE, &state);
    return state == AL_PLAYING || state == AL_PAUSED;
}

// Pan 0 is hard left, 128 the centre, 255 hard right: the source sits on a
// half circle in front of the listener, so its distance and loudness stay the same.
float panX(int pan) {
    float x = (pan - 128) / 127.0f;
    if (x < -1) x = -1;
    if (x > 1) x = 1;
    return x;
}

void place(const Channel& c) {
    alSource3f(c.source, AL_POSITION, c.x, 0, -std::sqrt(1 - c.x * c.x));
}

// The loudest the sounding channels can add up to on either side, at full master volume.
float loudest() {
    float side[2] = {0, 0};
    for (int i = 0; i < nchannels; i++) {
        Channel& c = channels[i];
        if (!c.sounding || !c.sample) continue;
        // A one-shot that has run out stops counting.
        if (!(c.sample->mode & FSOUND_LOOP_NORMAL) && !c.starting) {
            ALint state;
            alGetSourcei(c.source, AL_SOURCE_STATE, &state);
            if (state == AL_STOPPED || state == AL_INITIAL) {
                c.sounding = false;
                continue;
            }
        }
        for (int s = 0; s < 2; s++) {
            // A stereo sample's sides go straight to the speakers' sides.
            float reach = c.sample->stereo ? c.sample->peak[s] : c.sample->peak[0] * panLaw(s == 0 ? -c.x : c.x);
            side[s] += c.gain * reach;
        }
    }
    return side[0] > side[1] ? side[0] : side[1];
}

void setScale(float s) {
    scale = s;
    alListenerf(AL_GAIN, master * scale);
}

// The scale the channels need as they stand in our records.
float target() {
    float peak = master * loudest();
    return peak > kCeiling ? kCeiling / peak : 1.0f;
}

// A change that makes the mix louder must not be heard before the scale that
// makes room for it: a lower scale reaches the mixer, once it is past any
// update it was in the middle of, before the caller touches the sources
// (source starts are not deferred, so deferring both would not do).
void makeRoom() {
    float t = target();
    if (t >= scale) return;
    alDeferUpdatesSOFT();
    setScale(t);
    alProcessUpdatesSOFT();
}

// A higher scale only once the change that allows it has been made.
void rise() {
    float t = target();
    if (t != scale) setScale(t);
}

// The game asks after its channels every frame, in the menu as in a race:
// that is when one-shots that have run out give their room back.
void giveBack() {
    if (scale < 1.0f) rise();
}

// A change to one channel or all: first to our records, then, once there is
// room for it, to the sources.
template <typename Record, typename Act>
signed char change(int channel, Record record, Act act) {
    if (!each(channel, record)) return 0;
    makeRoom();
    each(channel, act);
    rise();
    return 1;
}

}  // namespace

signed char FSOUND_Init(int mixrate, int maxchannels, unsigned int) {
    if (context) return 1;
    device = alcOpenDevice(nullptr);
    if (!device) return 0;
    // The limiter stays as a last guard behind our own headroom, whatever
    // sample type the output runs at.
    const ALCint attributes[] = {ALC_FREQUENCY, mixrate, ALC_MONO_SOURCES, maxchannels,
                                 ALC_OUTPUT_LIMITER_SOFT, ALC_TRUE, 0};
    context = alcCreateContext(device, attributes);
    if (!context || !alcMakeContextCurrent(context)) {
        if (context) alcDestroyContext(context);
        alcCloseDevice(device);
        context = nullptr;
        device = nullptr;
        return 0;
    }
    // The game never closes the sound itself. A device still open when the
    // program ends makes OpenAL Soft write "device not closed" on the
    // player's terminal, and leaves a wave capture without its sizes; so the
    // sound closes itself on the way out.
    static bool closesatexit = false;
    if (!closesatexit) closesatexit = atexit(FSOUND_Close) == 0;
    // Volume falls with nothing but FSOUND_SetVolume: no distance model.
    alDistanceModel(AL_NONE);
    master = scale = 1.0f;
    nchannels = 0;
    if (maxchannels > kMaxChannels) maxchannels = kMaxChannels;
    for (int i = 0; i < maxchannels; i++) {
        alGetError();
        alGenSources(1, &channels[i].source);
        if (alGetError() != AL_NO_ERROR) break;
        alSourcei(channels[i].source, AL_SOURCE_RELATIVE, AL_TRUE);
        channels[i] = {channels[i].source, 0, nullptr, 1.0f, 0.0f, false, false};
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

    auto* sample = new FSOUND_SAMPLE{0, info.samplerate, mode, index != FSOUND_UNMANAGED, info.channels == 2, {0, 0}};
    for (size_t i = 0; i < (size_t)(got * info.channels); i++) {
        float v = std::abs(pcm[i]) / 32768.0f;
        float& peak = sample->peak[info.channels == 2 ? i % 2 : 0];
        if (v > peak) peak = v;
    }
    if (!sample->stereo) sample->peak[1] = sample->peak[0];
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
            channels[c].sounding = false;
        }
        alDeleteBuffers(1, &sample->buffer);
        delete sample;
        samples.erase(samples.begin() + (long)i);
        rise();
        return;
    }
}

static bool known(FSOUND_SAMPLE* sample) {
    for (FSOUND_SAMPLE* s : samples)
        if (s == sample) return true;
    return false;
}

// A sound goes to the first free channel, or to the channel a handle or a
// number names.
int FSOUND_PlaySound(int channel, FSOUND_SAMPLE* sample) {
    if (!context || !known(sample)) return -1;
    int c = -1;
    if (channel == FSOUND_FREE) {
        for (int i = 0; i < nchannels && c < 0; i++)
            if (!busy(channels[i])) c = i;
    } else {
        c = resolve(channel);
    }
    if (c < 0) return -1;
    Channel& ch = channels[c];
    alSourceStop(ch.source);
    unsigned int plays = (ch.plays + 1) % kPlaysWrap;
    ch = {ch.source, plays ? plays : 1, sample, 1.0f, panX(128), true, true};
    makeRoom();
    alSourcei(ch.source, AL_BUFFER, (ALint)sample->buffer);
    alSourcei(ch.source, AL_LOOPING, (sample->mode & FSOUND_LOOP_NORMAL) ? AL_TRUE : AL_FALSE);
    alSourcef(ch.source, AL_GAIN, 1.0f);
    alSourcef(ch.source, AL_PITCH, 1.0f);
    place(ch);
    alSourcePlay(ch.source);
    ch.starting = false;
    rise();
    return handle(c);
}

signed char FSOUND_StopSound(int channel) {
    return change(
        channel, [](Channel& c) { c.sounding = false; }, [](Channel& c) { alSourceStop(c.source); });
}

signed char FSOUND_IsPlaying(int channel) {
    int c = resolve(channel);
    if (c < 0) return 0;
    giveBack();
    return busy(channels[c]) ? 1 : 0;
}

unsigned int FSOUND_GetCurrentPosition(int channel) {
    int c = resolve(channel);
    if (c < 0) return 0;
    giveBack();
    ALint offset = 0;
    alGetSourcei(channels[c].source, AL_SAMPLE_OFFSET, &offset);
    return (unsigned int)offset;
}

signed char FSOUND_SetVolume(int channel, int volume) {
    if (volume < 0) volume = 0;
    if (volume > 255) volume = 255;
    float gain = volume / 255.0f;
    return change(
        channel, [gain](Channel& c) { c.gain = gain; }, [gain](Channel& c) { alSourcef(c.source, AL_GAIN, gain); });
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
    float x = panX(pan);
    return change(
        channel, [x](Channel& c) { c.x = x; }, [](Channel& c) { place(c); });
}

signed char FSOUND_SetPaused(int channel, signed char paused) {
    auto state = [](const Channel& c) {
        ALint state;
        alGetSourcei(c.source, AL_SOURCE_STATE, &state);
        return state;
    };
    auto record = [paused, state](Channel& c) {
        ALint now = state(c);
        if (paused && now == AL_PLAYING) c.sounding = false;
        if (!paused && now == AL_PAUSED) c.sounding = true;
    };
    return change(channel, record, [paused, state](Channel& c) {
        ALint now = state(c);
        if (paused && now == AL_PLAYING) alSourcePause(c.source);
        if (!paused && now == AL_PAUSED) alSourcePlay(c.source);
    });
}

signed char FSOUND_GetPaused(int channel) {
    int c = resolve(channel);
    if (c < 0) return 0;
    ALint state;
    alGetSourcei(channels[c].source, AL_SOURCE_STATE, &state);
    return state == AL_PAUSED ? 1 : 0;
}

void FSOUND_SetSFXMasterVolume(int volume) {
    if (!context) return;
    if (volume < 0) volume = 0;
    if (volume > 255) volume = 255;
    master = volume / 255.0f;
    setScale(target());
}
