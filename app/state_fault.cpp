#include "app/state_fault.h"

#include "platform/texts.h"

std::string state_fault(snapshot_fault fault) {
    switch (fault) {
    case snapshot_fault::none: return {};
    case snapshot_fault::no_snapshot: return platform::text("ステートのファイルではありません");
    case snapshot_fault::version: return platform::text("別の版のKivのステートです");
    case snapshot_fault::damaged: return platform::text("壊れています (途中で切れたか、書き換わったか)");
    case snapshot_fault::other_roms: return platform::text("別のROMイメージで作られたステートです");
    case snapshot_fault::other_tape: return platform::text("このときのテープが入っていません");
    case snapshot_fault::no_memory: return platform::text("テープを入れるメモリが足りません");
    }
    return snapshot_fault_text(fault);
}
