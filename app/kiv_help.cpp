#include "app/kiv_help.h"

#include "platform/texts.h"

// The dotted columns line up in a fixed-pitch font, in which half-width katakana take one column.
// clang-format off
const char help_text[] =
    "==========================================\r\n"
    " \"Kiv\"のキー操作について\r\n"
    "==========================================\r\n"
    "[F6] ................ Kiv形式ﾒﾓﾘﾀﾞﾝﾌﾟﾌｧｲﾙ出力\r\n"
    "[F7] ................ 機能設定\r\n"
    "[F8] ................ サウンド ON/OFF\r\n"
    "[F9] ................ Kiv/CMTファイル選択\r\n"
    "[F11] ............... PCG-8100 ON/OFF\r\n"
    "[F12] ............... リセットボタン\r\n"
    "\r\n"
    "[SHIFT]+[F9] ........ CMTﾌｧｲﾙ保存先指定(CSAVE/W)\r\n"
    "[SHIFT]+[F12] ....... 全画面切り替え ON/OFF\r\n"
    "\r\n"
    "==========================================\r\n"
    " \"Kiv\"のキーバインドについて\r\n"
    "==========================================\r\n"
    "[GRPH] .............. [無変換]\r\n"
    "[カナ] .............. [変換]\r\n"
    "[STOP] .............. [BS]\r\n"
    "\r\n"
    "==========================================\r\n"
    " \"Kiv\"の機能設定について\r\n"
    "==========================================\r\n"
    "[DMA load] .......... VRAMのDMA転送遅延を指定(100)\r\n"
    "[DMA gain] .......... 上記で指定の値の減算単位(20)\r\n"
    "[Volue] ............. DirectSoundﾊｰﾄﾞｳｪｱVolume(db)\r\n"
    "[Amplitude] ......... DirectSoundｿﾌﾄｳｪｱVolume\r\n"
    "\r\n"
    "[Text diff-draw]..... 変更行のみ描替え\r\n"
    "[Interlace like]..... ｲﾝﾀﾚｰｽ効果\r\n"
    "[TenKeyLess] ........ ｶｰｿﾙKeyに2468を割当てる(ﾃﾝｷｰの無いKB用)\r\n"
    "[NoWait] ............ M1WaitとROMﾒﾓﾘｱｸｾｽのｳｪｲﾄを除去\r\n"
    "[720x480] ........... 全画面時に640x480が使えない場合に指定\r\n";
const char help_more[] =
    "\r\n==========================================\r\n"
    " その他のキー\r\n"
    "==========================================\r\n"
    "[SHIFT]+[F6] ........ 速度の表示 ON/OFF\r\n"
    "[Pause] [End] ....... 終了\r\n"
    "[F10] ............... メニュー\r\n"
    "[Alt]+[P] ........... 一時停止\r\n"
    "[Alt]+[Q] ........... ステートの保存\r\n"
    "[Alt]+[L] ........... ステートの読み込み\r\n"
    "[Alt]+[Z] ........... 読み込みの取り消し\r\n"
    "[Scroll Lock] ....... 押す間 時間を巻き戻す\r\n"
    "[SHIFT]+[ScrollLock]. 押す間 早送り\r\n"
    "[Alt]+[←] ........... 時間を巻き戻す\r\n"
    "[Alt]+[F] ........... 早送り\r\n"
    "[Alt]+[(SHIFT+)N] .... コマ送り (コマ戻し)\r\n"
    "[Alt]+[Insert] ...... 貼り付けて打つ\r\n"
    "[Alt]+[C] ........... 画面の文字をコピー\r\n"
    "[Alt]+[I] ........... スクリーンショット\r\n"
    "[Alt]+[W] ........... 録音 (WAV)\r\n"
    "[Alt]+[SHIFT]+[W] ... 録画 (ffmpeg)\r\n"
    "[Alt]+[↑] [↓] ....... 音量\r\n"
    "[Alt]+[B] ........... 本体のキーボードを表示\r\n"
    "[Alt]+[A] ........... 縦横比 4:3\r\n"
    "[Alt]+[1]...[6] ..... 画面の大きさ\r\n"
    "[Alt]+[F4] .......... 終了\r\n"
    "\r\n"
    "==========================================\r\n"
    " 無いキーの代わり\r\n"
    "==========================================\r\n"
    "[￥] ................ [`] (1の左)\r\n"
    "[_] ................. [Page Up]\r\n"
    "[GRPH] .............. 右[Alt]\r\n"
    "[カナ] .............. [Menu] [Page Down] [Caps Lock]\r\n"
    "[STOP] .............. [Alt]+[BS]\r\n"
    "[HELP] .............. [Alt]+[F11]\r\n"
    "[COPY] .............. [Print Screen] [Alt]+[F12]\r\n"
    "[CAPS] .............. [Num Lock] [Alt]+[Caps Lock]\r\n"
    "ﾃﾝｷｰの[-] [/] [,] [=]  [Alt]+[-] [/] [,] [^(US: =)]\r\n";
// clang-format on

platform::help_dialog make_help_dialog() {
    platform::help_dialog dialog;
    dialog.caption = platform::text("Kivについて");
    dialog.program_line = "Kiv - PC-8001 Emulator";
    dialog.copyright_line = "Copyright (c) 2026 The Kiv authors";
    dialog.text = platform::text(help_text) + platform::text(help_more);
    return dialog;
}
