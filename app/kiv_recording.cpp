// The sound's loudness, and recordings of sound and picture.
#include "app/form_scopes.h"
#include "app/kiv_form.h"
#include "app/recording.h"

#include "machine/kiv_machine.h"
#include "platform/file.h"
#include "platform/texts.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>

namespace fs = std::filesystem;

// "FOLDER/kiv-2026-11-25-024000.png", named after the moment, and a name that is free.
std::string kiv_form::dated_path(const std::string &folder, const char *extension) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char name[64];
    std::strftime(name, sizeof name, "kiv-%Y-%m-%d-%H%M%S", &local);
    std::string path = folder + "/" + name + extension;
    std::error_code ignored;
    for (int n = 2; fs::exists(path, ignored); ++n)
        path = folder + "/" + name + "-" + std::to_string(n) + extension;
    return path;
}

void kiv_form::change_volume(int by) {
    const int volume = std::clamp(own.values[user_volume] + by, 0, user_volume_highest);
    choose(user_volume, volume);
    notify(platform::text("音量 ") + std::to_string(volume * 10) + " %");
}

bool kiv_form::is_recording(recording::kind what) const {
    return recorder != nullptr && recorder->what() == what && !recorder->is_stopping();
}

// Begins one, or ends the one that runs.
void kiv_form::toggle_recording(recording::kind what) {
    if (is_recording(what)) return end_recording();
    if (recorder != nullptr) {
        tell_fault(platform::text("前の録音・録画を書き込んでいます"));
        return;
    }
    const bool video = what == recording::kind::video;
    const pause_scope pause(*this);
    if (!pause) return;
    const std::string path =
        dated_path(video ? host.movies_folder() : host.music_folder(), video ? ".mp4" : ".wav");
    if (!platform::make_folder_of(path)) return tell_fault(path + ": " + platform::last_file_error());
    recorder = std::make_unique<recording>(what, path, [this, path](const std::string &wrong) {
        if (!wrong.empty()) // the window may be gone by then
            std::fprintf(stderr, "kiv: %s: %s\n", path.c_str(), wrong.c_str());
        {
            const std::lock_guard lock(recording_mutex);
            recording_fault = wrong;
        }
        post(WM_RECORDED, 0, 0);
    });
    const uint32_t frame = machine.line_clocks * machine.display_lines + machine.vblank_clocks;
    if (const std::string wrong = recorder->start(frame); !wrong.empty()) {
        tell_fault(recorder->path() + ": " + wrong);
        recorder.reset();
        return;
    }
    program.directx->set_tap(recorder.get());
    notify(platform::text(video ? "録画開始: " : "録音開始: ") + recorder->path());
    window->menus_changed();
}

void kiv_form::end_recording() {
    if (recorder == nullptr) return;
    program.directx->set_tap(nullptr);
    recorder->stop();
    window->menus_changed();
}

// The file is whole, or is not: by the person's wish or by a failure.
void kiv_form::recorded() {
    if (recorder == nullptr) return;
    program.directx->set_tap(nullptr);
    std::string wrong;
    {
        const std::lock_guard lock(recording_mutex);
        wrong = recording_fault;
    }
    const std::string path = recorder->path();
    recorder.reset();
    if (wrong.empty())
        notify(path + platform::text(" に保存しました"));
    else
        tell_fault(path + ": " + wrong);
    window->menus_changed();
}
