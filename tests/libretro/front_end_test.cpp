// A front end of a hundred lines: loads the core as front ends do, and asks of it what they ask.
#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <gtest/gtest.h>
#include <libretro.h>
#include <map>
#include <string>
#include <vector>

// What a frame must not do: these stand before the C library's, for the core too.
namespace {
thread_local bool watched = false;
size_t allocations = 0, locks = 0;
} // namespace

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define WATCHES_CALLS
extern "C" {
void *__libc_malloc(size_t);
void *__libc_calloc(size_t, size_t);
void *__libc_realloc(void *, size_t);
void *malloc(size_t size) { return allocations += watched, __libc_malloc(size); }
void *calloc(size_t count, size_t size) { return allocations += watched, __libc_calloc(count, size); }
void *realloc(void *at, size_t size) { return allocations += watched, __libc_realloc(at, size); }
int pthread_mutex_lock(pthread_mutex_t *mutex) {
    static const auto real =
        reinterpret_cast<int (*)(pthread_mutex_t *)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    return locks += watched, real(mutex);
}
}
#endif

namespace {

unsigned language = RETRO_LANGUAGE_ENGLISH;
std::string option_names, local_names; // in both languages: keys, values and defaults, without the texts
size_t local_texts = 0;                // options whose text differs between the languages

void read_options(const retro_core_options_v2_intl &both) {
    const auto names = [](const retro_core_option_v2_definition *d, std::string &into) {
        for (into.clear(); d->key != nullptr; ++d) {
            into += std::string(d->key) + '=' + d->default_value + ':';
            for (const auto *v = d->values; v->value != nullptr; ++v) into += std::string(v->value) + '|';
        }
    };
    names(both.us->definitions, option_names);
    if (both.local == nullptr) return;
    names(both.local->definitions, local_names);
    local_texts = 0;
    for (size_t i = 0; both.us->definitions[i].key != nullptr && both.local->definitions[i].key != nullptr;
         ++i)
        local_texts += std::strcmp(both.us->definitions[i].desc, both.local->definitions[i].desc) != 0;
}

std::map<std::string, std::string> options; // as a person has set them
std::string said;                           // the core's messages
retro_keyboard_event_t keyboard;
retro_disk_control_ext_callback disks;
std::vector<uint32_t> picture;
std::vector<int16_t> sound;
int16_t pad[16];

bool environment(unsigned command, void *data) {
    switch (command) {
    case RETRO_ENVIRONMENT_GET_CORE_OPTIONS_VERSION: *static_cast<unsigned *>(data) = 2; return true;
    case RETRO_ENVIRONMENT_GET_DISK_CONTROL_INTERFACE_VERSION:
        *static_cast<unsigned *>(data) = 1;
        return true;
    case RETRO_ENVIRONMENT_GET_LANGUAGE: *static_cast<unsigned *>(data) = language; return true;
    case RETRO_ENVIRONMENT_SET_CORE_OPTIONS_V2_INTL: {
        const auto *both = static_cast<retro_core_options_v2_intl *>(data);
        read_options(*both);
        for (auto *d = both->us->definitions; d->key != nullptr; ++d)
            options.emplace(d->key, d->default_value);
        return true;
    }
    case RETRO_ENVIRONMENT_GET_VARIABLE: {
        auto *variable = static_cast<retro_variable *>(data);
        const auto found = options.find(variable->key);
        variable->value = found != options.end() ? found->second.c_str() : nullptr;
        return found != options.end();
    }
    case RETRO_ENVIRONMENT_SET_KEYBOARD_CALLBACK:
        keyboard = static_cast<retro_keyboard_callback *>(data)->callback;
        return true;
    case RETRO_ENVIRONMENT_SET_DISK_CONTROL_EXT_INTERFACE:
        disks = *static_cast<retro_disk_control_ext_callback *>(data);
        return true;
    case RETRO_ENVIRONMENT_SET_MESSAGE: said += static_cast<retro_message *>(data)->msg; return true;
    case RETRO_ENVIRONMENT_SET_PIXEL_FORMAT:
    case RETRO_ENVIRONMENT_SET_SUPPORT_NO_GAME: return true;
    default: return false;
    }
}

struct core {
    void *library = dlopen(KIV_LIBRETRO_CORE, RTLD_NOW | RTLD_LOCAL);
    template <class Function> Function *operation(const char *name) const {
        return reinterpret_cast<Function *>(dlsym(library, name));
    }
#define CORE(name) decltype(::name) *name = operation<decltype(::name)>(#name)
    CORE(retro_set_environment);
    CORE(retro_set_video_refresh);
    CORE(retro_set_audio_sample_batch);
    CORE(retro_set_input_poll);
    CORE(retro_set_input_state);
    CORE(retro_init);
    CORE(retro_load_game);
    CORE(retro_run);
    CORE(retro_reset);
    CORE(retro_get_system_av_info);
    CORE(retro_serialize_size);
    CORE(retro_serialize);
    CORE(retro_unserialize);
    CORE(retro_unload_game);
    CORE(retro_deinit);
#undef CORE
};

struct FrontEnd : testing::Test {
    core kiv;

    void SetUp() override {
        ASSERT_NE(kiv.library, nullptr) << dlerror();
        options.clear();
        said.clear();
        picture.clear();
        std::memset(pad, 0, sizeof pad);
        kiv.retro_set_environment(environment);
        kiv.retro_set_video_refresh([](const void *pixels, unsigned width, unsigned height, size_t pitch) {
            ASSERT_EQ(pitch, width * 4);
            picture.assign(static_cast<const uint32_t *>(pixels),
                           static_cast<const uint32_t *>(pixels) + size_t{width} * height);
        });
        kiv.retro_set_audio_sample_batch([](const int16_t *samples, size_t frames) {
            for (size_t i = 0; i < frames; ++i) {
                EXPECT_EQ(samples[2 * i], samples[2 * i + 1]);
                sound.push_back(samples[2 * i]);
            }
            return frames;
        });
        kiv.retro_set_input_poll([] {});
        kiv.retro_set_input_state([](unsigned, unsigned, unsigned, unsigned id) { return pad[id & 15]; });
        kiv.retro_init();
    }
    void TearDown() override {
        kiv.retro_unload_game();
        kiv.retro_deinit();
    }
    void run(int frames) {
        sound.clear();
        for (int i = 0; i < frames; ++i) kiv.retro_run();
    }
    void type(unsigned key) {
        keyboard(true, key, 0, 0);
        run(4);
        keyboard(false, key, 0, 0);
        run(4);
    }
};

TEST_F(FrontEnd, RunsBasicWithoutContentAndReplaysItsStates) {
    ASSERT_TRUE(kiv.retro_load_game(nullptr)) << said;
    retro_system_av_info info{};
    kiv.retro_get_system_av_info(&info);
    EXPECT_NEAR(info.timing.fps, 55.37, 0.01);
    run(120);
    const auto title = picture;
    for (const unsigned key : {RETROK_b, RETROK_e, RETROK_e, RETROK_p, RETROK_RETURN}) type(key);
    EXPECT_NE(picture, title) << "what is typed is seen";

    std::vector<uint8_t> state(kiv.retro_serialize_size());
    ASSERT_TRUE(kiv.retro_serialize(state.data(), state.size()));
    run(90);
    const auto after = picture;
    const auto heard = sound;
    EXPECT_NEAR(static_cast<double>(sound.size()), 90 / info.timing.fps * info.timing.sample_rate, 2000);
    ASSERT_TRUE(kiv.retro_unserialize(state.data(), state.size())) << said;
    run(90);
    EXPECT_EQ(picture, after);
    EXPECT_EQ(sound.size(), heard.size());

    state[100] ^= 0xFF;
    EXPECT_FALSE(kiv.retro_unserialize(state.data(), state.size()));
    EXPECT_NE(said, "");
}

TEST_F(FrontEnd, AListingRunsAndTapesAreChangedInTheDeck) {
    const std::string listing = "10 SCREEN_OFF=1\n20 COLOR 2:PRINT \"KIV\"\n";
    const retro_game_info content{"first.bas", listing.data(), listing.size(), nullptr};
    ASSERT_TRUE(kiv.retro_load_game(&content)) << said;
    run(600);
    EXPECT_NE(std::count(picture.begin(), picture.end(), 0xFF0000u), 0) << "the program has printed in red";

    EXPECT_EQ(disks.get_num_images(), 1u);
    ASSERT_TRUE(disks.set_eject_state(true));
    ASSERT_TRUE(disks.add_image_index());
    const std::string other = "10 PRINT 1\n";
    const retro_game_info second{"folder/second.cmt", other.data(), other.size(), nullptr};
    ASSERT_TRUE(disks.replace_image_index(1, &second));
    ASSERT_TRUE(disks.set_image_index(1));
    ASSERT_TRUE(disks.set_eject_state(false));
    char label[32];
    EXPECT_TRUE(disks.get_image_label(1, label, sizeof label));
    EXPECT_STREQ(label, "second");

    // A state made with the one tape brings it back when it is loaded.
    std::vector<uint8_t> state(kiv.retro_serialize_size());
    ASSERT_TRUE(kiv.retro_serialize(state.data(), state.size()));
    disks.set_eject_state(true);
    disks.set_image_index(0);
    disks.set_eject_state(false);
    EXPECT_TRUE(kiv.retro_unserialize(state.data(), state.size())) << said;
    EXPECT_EQ(disks.get_image_index(), 1u);
}

// Rewind and run-ahead load a state every frame: a program that starts by itself starts then, too. It is
// long, so that RUN has to wait for the tape.
TEST_F(FrontEnd, AListingStartsWhileStatesAreLoadedEveryFrame) {
    std::string listing;
    for (int line = 10; line < 1500; line += 10)
        listing += std::to_string(line) + " REM A LINE OF SOME LENGTH\n";
    listing += "1500 COLOR 2:CLS:PRINT \"KIV\"\n";
    const retro_game_info content{"long.BAS", listing.data(), listing.size(), nullptr};
    ASSERT_TRUE(kiv.retro_load_game(&content)) << said;
    constexpr int frames = 1200;
    run(frames);
    const auto whole = picture;
    const auto shown = [&](uint32_t colour) { return std::count(whole.begin(), whole.end(), colour); };
    EXPECT_NE(shown(0xFF0000), 0) << "the program has printed in red";
    EXPECT_EQ(shown(0xFF0000) + shown(0xFFFFFF) + shown(0), 640 * 400) << "and cleared the screen before";

    ASSERT_TRUE(kiv.retro_load_game(&content)) << said;
    std::vector<uint8_t> state(kiv.retro_serialize_size());
    for (int i = 0; i < frames; ++i) {
        ASSERT_TRUE(kiv.retro_serialize(state.data(), state.size()));
        run(1);
        ASSERT_TRUE(kiv.retro_unserialize(state.data(), state.size())) << said;
        run(1);
    }
    EXPECT_EQ(picture, whole);
}

TEST_F(FrontEnd, AFrameAllocatesNothingAndTakesNoLock) {
#ifndef WATCHES_CALLS
    GTEST_SKIP() << "a sanitizer watches these calls itself";
#endif
    std::ifstream file(KIV_SOURCE_DIR "/programs/mandelbrot.bas", std::ios::binary);
    const std::string listing{std::istreambuf_iterator<char>(file), {}};
    const retro_game_info content{"mandelbrot.bas", listing.data(), listing.size(), nullptr};
    ASSERT_TRUE(kiv.retro_load_game(&content)) << said;
    kiv.retro_set_video_refresh([](const void *, unsigned, unsigned, size_t) {});
    kiv.retro_set_audio_sample_batch([](const int16_t *, size_t frames) { return frames; });
    std::vector<uint8_t> state(kiv.retro_serialize_size());
    watched = true;
    void *volatile seen = ::operator new(100);
    watched = false;
    ::operator delete(seen);
    ASSERT_GE(allocations, 1u) << "the hooks are not called";
    allocations = locks = 0;
    constexpr int frames = 1000;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < frames; ++i) {
        pad[i / 7 % 12] ^= 1;
        watched = true;
        kiv.retro_run();
        watched = false;
    }
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
    std::printf("%.3f ms a frame\n", taken.count() / frames);
    EXPECT_EQ(allocations, 0u);
    EXPECT_EQ(locks, 0u);
    watched = true;
    kiv.retro_serialize(state.data(), state.size());
    watched = false;
    EXPECT_EQ(allocations, 0u) << "of a state";
}

TEST_F(FrontEnd, OptionsStandInBothLanguages) {
    language = RETRO_LANGUAGE_JAPANESE;
    kiv.retro_set_environment(environment);
    language = RETRO_LANGUAGE_ENGLISH;
    EXPECT_EQ(option_names, local_names);
    EXPECT_GE(local_texts + 1, options.size()) << "all but \"BASIC\" read differently";
}

TEST_F(FrontEnd, MissingImagesAreNamed) {
    options["kiv_roms"] = "system"; // and the front end has no such folder
    EXPECT_FALSE(kiv.retro_load_game(nullptr));
    EXPECT_NE(said.find("system folder"), std::string::npos) << said;
}

} // namespace
