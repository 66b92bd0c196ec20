<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="ja">
<context>
    <name>kiv</name>
    <message>
        <source>BMPリソース読み込み失敗</source>
        <translation>The built-in pause picture could not be read.</translation>
    </message>
    <message>
        <source>FNTリソース読み込み失敗</source>
        <translation>The built-in font could not be read.</translation>
    </message>
    <message>
        <source>ROMイメージファイル読み込み失敗</source>
        <translation>The ROM image files could not be read.</translation>
    </message>
    <message>
        <source>フォルダを選ぶ(&amp;F)...</source>
        <translation>Choose a &amp;folder...</translation>
    </message>
    <message>
        <source>付属のROMで起動(&amp;S)</source>
        <translation>&amp;Start with the open ROM set</translation>
    </message>
    <message>
        <source>ROMイメージのフォルダ</source>
        <translation>Folder of ROM images</translation>
    </message>
    <message>
        <source>INIファイル読み込み失敗</source>
        <translation>The settings file KIV.INI could not be read.</translation>
    </message>
    <message>
        <source>保存せずに続ける(&amp;C)</source>
        <translation>&amp;Continue without saving</translation>
    </message>
    <message>
        <source>ROMを替えました</source>
        <translation>The ROM images have been changed</translation>
    </message>
    <message>
        <source>パス名が長すぎます</source>
        <translation>The path is too long.</translation>
    </message>
    <message>
        <source>未実装命令</source>
        <translation>Unimplemented instruction</translation>
    </message>
    <message>
        <source> HALT命令</source>
        <translation>HALT instruction</translation>
    </message>
    <message>
        <source>未定義命令</source>
        <translation>Undefined instruction</translation>
    </message>
    <message>
        <source>$%4.4X にて%sを検出につき終了。</source>
        <translation>%s at $%4.4X: the program ends.</translation>
    </message>
    <message>
        <source>メニュー「設定」の「HALTは割り込みを待つ」で続けられます。</source>
        <translation>With &quot;HALT waits for an interrupt&quot; in the menu Settings it would have gone on.</translation>
    </message>
    <message>
        <source>メニュー「設定」の「未定義命令を読み飛ばす」で続けられます。</source>
        <translation>With &quot;Step over undefined instructions&quot; in the menu Settings it would have gone on.</translation>
    </message>
    <message>
        <source>サウンド OFF</source>
        <translation>Sound off</translation>
    </message>
    <message>
        <source>サウンド ON</source>
        <translation>Sound on</translation>
    </message>
    <message>
        <source>Kiv ﾌｧｲﾙの保存</source>
        <translation>Save a memory dump</translation>
    </message>
    <message>
        <source>Kiv ﾌﾟﾛｸﾞﾗﾑﾌｧｲﾙ</source>
        <translation>Kiv program files</translation>
    </message>
    <message>
        <source> に保存しました</source>
        <translation> saved</translation>
    </message>
    <message>
        <source>Kiv ﾌｧｲﾙの選択</source>
        <translation>Open a memory dump or a tape</translation>
    </message>
    <message>
        <source> を読み込みました</source>
        <translation> loaded</translation>
    </message>
    <message>
        <source> をテープに入れました</source>
        <translation>: the tape is in</translation>
    </message>
    <message>
        <source>CMT ﾌｧｲﾙの保存先選択</source>
        <translation>Choose the tape to record on</translation>
    </message>
    <message>
        <source>CMT 出力ﾌｧｲﾙ</source>
        <translation>CMT output files</translation>
    </message>
    <message>
        <source>==========================================&#xd;
 &quot;Kiv&quot;のキー操作について&#xd;
==========================================&#xd;
[F6] ................ Kiv形式ﾒﾓﾘﾀﾞﾝﾌﾟﾌｧｲﾙ出力&#xd;
[F7] ................ 機能設定&#xd;
[F8] ................ サウンド ON/OFF&#xd;
[F9] ................ Kiv/CMTファイル選択&#xd;
[F11] ............... PCG-8100 ON/OFF&#xd;
[F12] ............... リセットボタン&#xd;
&#xd;
[SHIFT]+[F9] ........ CMTﾌｧｲﾙ保存先指定(CSAVE/W)&#xd;
[SHIFT]+[F12] ....... 全画面切り替え ON/OFF&#xd;
&#xd;
==========================================&#xd;
 &quot;Kiv&quot;のキーバインドについて&#xd;
==========================================&#xd;
[GRPH] .............. [無変換]&#xd;
[カナ] .............. [変換]&#xd;
[STOP] .............. [BS]&#xd;
&#xd;
==========================================&#xd;
 &quot;Kiv&quot;の機能設定について&#xd;
==========================================&#xd;
[DMA load] .......... VRAMのDMA転送遅延を指定(100)&#xd;
[DMA gain] .......... 上記で指定の値の減算単位(20)&#xd;
[Volue] ............. DirectSoundﾊｰﾄﾞｳｪｱVolume(db)&#xd;
[Amplitude] ......... DirectSoundｿﾌﾄｳｪｱVolume&#xd;
&#xd;
[Text diff-draw]..... 変更行のみ描替え&#xd;
[Interlace like]..... ｲﾝﾀﾚｰｽ効果&#xd;
[TenKeyLess] ........ ｶｰｿﾙKeyに2468を割当てる(ﾃﾝｷｰの無いKB用)&#xd;
[NoWait] ............ M1WaitとROMﾒﾓﾘｱｸｾｽのｳｪｲﾄを除去&#xd;
[720x480] ........... 全画面時に640x480が使えない場合に指定&#xd;
</source>
        <translation>==========================================&#xd;
 Keys of &quot;Kiv&quot;&#xd;
==========================================&#xd;
[F6] ................ save a memory dump in Kiv's format&#xd;
[F7] ................ settings&#xd;
[F8] ................ sound on/off&#xd;
[F9] ................ choose a Kiv or CMT file&#xd;
[F11] ............... PCG-8100 on/off&#xd;
[F12] ............... reset button&#xd;
&#xd;
[SHIFT]+[F9] ........ choose the CMT file to save to (CSAVE/W)&#xd;
[SHIFT]+[F12] ....... full screen on/off&#xd;
&#xd;
==========================================&#xd;
 Key bindings of &quot;Kiv&quot;&#xd;
==========================================&#xd;
[GRPH] .............. [muhenkan]&#xd;
[KANA] .............. [henkan]&#xd;
[STOP] .............. [BS]&#xd;
&#xd;
==========================================&#xd;
 Settings of &quot;Kiv&quot;&#xd;
==========================================&#xd;
[DMA load] .......... delay by the DMA transfer of the VRAM (100)&#xd;
[DMA gain] .......... step by which it is lowered (20)&#xd;
[Volue] ............. hardware volume (dB)&#xd;
[Amplitude] ......... software volume&#xd;
&#xd;
[Text diff-draw]..... redraw changed rows only&#xd;
[Interlace like]..... interlace effect&#xd;
[TenKeyLess] ........ arrow keys are 2468 (keyboards without a ten-key)&#xd;
[NoWait] ............ no M1 and ROM memory waits&#xd;
[720x480] ........... for full screens without 640x480&#xd;
</translation>
    </message>
    <message>
        <source>&#xd;
==========================================&#xd;
 その他のキー&#xd;
==========================================&#xd;
[SHIFT]+[F6] ........ 速度の表示 ON/OFF&#xd;
[Pause] [End] ....... 終了&#xd;
[F10] ............... メニュー&#xd;
[Alt]+[P] ........... 一時停止&#xd;
[Alt]+[Q] ........... ステートの保存&#xd;
[Alt]+[L] ........... ステートの読み込み&#xd;
[Alt]+[Z] ........... 読み込みの取り消し&#xd;
[Scroll Lock] ....... 押す間 時間を巻き戻す&#xd;
[SHIFT]+[ScrollLock]. 押す間 早送り&#xd;
[Alt]+[←] ........... 時間を巻き戻す&#xd;
[Alt]+[F] ........... 早送り&#xd;
[Alt]+[(SHIFT+)N] .... コマ送り (コマ戻し)&#xd;
[Alt]+[Insert] ...... 貼り付けて打つ&#xd;
[Alt]+[C] ........... 画面の文字をコピー&#xd;
[Alt]+[I] ........... スクリーンショット&#xd;
[Alt]+[W] ........... 録音 (WAV)&#xd;
[Alt]+[SHIFT]+[W] ... 録画 (ffmpeg)&#xd;
[Alt]+[↑] [↓] ....... 音量&#xd;
[Alt]+[B] ........... 本体のキーボードを表示&#xd;
[Alt]+[A] ........... 縦横比 4:3&#xd;
[Alt]+[1]...[6] ..... 画面の大きさ&#xd;
[Alt]+[F4] .......... 終了&#xd;
&#xd;
==========================================&#xd;
 無いキーの代わり&#xd;
==========================================&#xd;
[￥] ................ [`] (1の左)&#xd;
[_] ................. [Page Up]&#xd;
[GRPH] .............. 右[Alt]&#xd;
[カナ] .............. [Menu] [Page Down] [Caps Lock]&#xd;
[STOP] .............. [Alt]+[BS]&#xd;
[HELP] .............. [Alt]+[F11]&#xd;
[COPY] .............. [Print Screen] [Alt]+[F12]&#xd;
[CAPS] .............. [Num Lock] [Alt]+[Caps Lock]&#xd;
ﾃﾝｷｰの[-] [/] [,] [=]  [Alt]+[-] [/] [,] [^(US: =)]&#xd;
</source>
        <translation>&#xd;
==========================================&#xd;
 More keys&#xd;
==========================================&#xd;
[SHIFT]+[F6] ........ speed line on/off&#xd;
[Pause] [End] ....... exit&#xd;
[F10] ............... menu&#xd;
[Alt]+[P] ........... pause&#xd;
[Alt]+[Q] ........... save the state&#xd;
[Alt]+[L] ........... load it&#xd;
[Alt]+[Z] ........... take a load back&#xd;
[Scroll Lock] ....... rewind while it is held&#xd;
[SHIFT]+[ScrollLock]. fast forward while held&#xd;
[Alt]+[Left] ........ rewind&#xd;
[Alt]+[F] ........... fast forward&#xd;
[Alt]+[(SHIFT+)N] .... a frame on (back)&#xd;
[Alt]+[Insert] ...... paste as typing&#xd;
[Alt]+[C] ........... copy the screen's text&#xd;
[Alt]+[I] ........... screenshot&#xd;
[Alt]+[W] ........... record the sound (WAV)&#xd;
[Alt]+[SHIFT]+[W] ... record a video (ffmpeg)&#xd;
[Alt]+[Up] [Down] ... volume&#xd;
[Alt]+[B] ........... the machine's keyboard&#xd;
[Alt]+[A] ........... aspect 4:3&#xd;
[Alt]+[1]...[6] ..... size of the picture&#xd;
[Alt]+[F4] .......... exit&#xd;
&#xd;
==========================================&#xd;
 Stand-ins for keys that are missing&#xd;
==========================================&#xd;
[yen] ............... [`] left of 1&#xd;
[_] ................. [Page Up]&#xd;
[GRPH] .............. right [Alt]&#xd;
[KANA] .............. [Menu] [Page Down] [Caps Lock]&#xd;
[STOP] .............. [Alt]+[BS]&#xd;
[HELP] .............. [Alt]+[F11]&#xd;
[COPY] .............. [Print Screen] [Alt]+[F12]&#xd;
[CAPS] .............. [Num Lock] [Alt]+[Caps Lock]&#xd;
ten-key [-] [/] [,] [=]  [Alt]+[-] [/] [,] [=]&#xd;
</translation>
    </message>
    <message>
        <source>Kivについて</source>
        <translation>About Kiv</translation>
    </message>
    <message>
        <source>開く(&amp;O)...</source>
        <translation>&amp;Open...</translation>
    </message>
    <message>
        <source>最近使ったファイル(&amp;R)</source>
        <translation>&amp;Recent files</translation>
    </message>
    <message>
        <source>ROMフォルダ(&amp;F)...</source>
        <translation>ROM &amp;folder...</translation>
    </message>
    <message>
        <source>メモリダンプの保存(&amp;D)...</source>
        <translation>Save a memory &amp;dump...</translation>
    </message>
    <message>
        <source>早送り(&amp;Q)</source>
        <translation>Fast forward (&amp;Q)</translation>
    </message>
    <message>
        <source>速さ(&amp;V)</source>
        <translation>Speed (&amp;V)</translation>
    </message>
    <message>
        <source>コマ送り(&amp;N)</source>
        <translation>&amp;Next frame</translation>
    </message>
    <message>
        <source>コマ戻し(&amp;B)</source>
        <translation>Frame &amp;back</translation>
    </message>
    <message>
        <source>時間を巻き戻す(&amp;W)</source>
        <translation>Re&amp;wind time</translation>
    </message>
    <message>
        <source>速さ</source>
        <translation>Speed</translation>
    </message>
    <message>
        <source>早送り</source>
        <translation>Fast forward</translation>
    </message>
    <message>
        <source>もとの速さ</source>
        <translation>Speed as before</translation>
    </message>
    <message>
        <source>これより前には戻れません</source>
        <translation>There is nothing earlier</translation>
    </message>
    <message>
        <source>巻き戻し中</source>
        <translation>Rewinding</translation>
    </message>
    <message>
        <source>一時停止(&amp;P)</source>
        <translation>&amp;Pause</translation>
    </message>
    <message>
        <source>リセット(&amp;E)</source>
        <translation>R&amp;eset</translation>
    </message>
    <message>
        <source>終了(&amp;X)</source>
        <translation>E&amp;xit</translation>
    </message>
    <message>
        <source>ステートの保存(&amp;Q)</source>
        <translation>&amp;Quick save</translation>
    </message>
    <message>
        <source>ステートの読み込み(&amp;L)</source>
        <translation>Quick &amp;load</translation>
    </message>
    <message>
        <source>読み込みの取り消し(&amp;U)</source>
        <translation>&amp;Undo load</translation>
    </message>
    <message>
        <source>番号を選んで保存(&amp;S)</source>
        <translation>&amp;Save to</translation>
    </message>
    <message>
        <source>番号を選んで読み込み(&amp;O)</source>
        <translation>L&amp;oad from</translation>
    </message>
    <message>
        <source>ファイルに保存(&amp;F)...</source>
        <translation>Save to a &amp;file...</translation>
    </message>
    <message>
        <source>ファイルから読み込み(&amp;R)...</source>
        <translation>Load f&amp;rom a file...</translation>
    </message>
    <message>
        <source>貼り付けて打つ(&amp;V)</source>
        <translation>Paste as t&amp;yping</translation>
    </message>
    <message>
        <source>画面の文字をコピー(&amp;T)</source>
        <translation>Copy the &amp;text</translation>
    </message>
    <message>
        <source>画面の絵をコピー(&amp;P)</source>
        <translation>Copy the &amp;picture</translation>
    </message>
    <message>
        <source>スクリーンショット(&amp;S)</source>
        <translation>&amp;Screenshot</translation>
    </message>
    <message>
        <source>テープなし</source>
        <translation>No tape</translation>
    </message>
    <message>
        <source>ステートのテープ</source>
        <translation>the state's tape</translation>
    </message>
    <message>
        <source>テープを入れる(&amp;L)...</source>
        <translation>&amp;Load a tape...</translation>
    </message>
    <message>
        <source>再生(&amp;P)</source>
        <translation>&amp;Play</translation>
    </message>
    <message>
        <source>停止(&amp;S)</source>
        <translation>&amp;Stop</translation>
    </message>
    <message>
        <source>巻き戻し(&amp;R)</source>
        <translation>&amp;Rewind</translation>
    </message>
    <message>
        <source>取り出し(&amp;E)</source>
        <translation>&amp;Eject</translation>
    </message>
    <message>
        <source>速く読み込む(&amp;F)</source>
        <translation>&amp;Fast load</translation>
    </message>
    <message>
        <source>画面の先読み(&amp;R)</source>
        <translation>&amp;Run-ahead</translation>
    </message>
    <message>
        <source>1 フレーム(&amp;1)</source>
        <translation>&amp;1 frame</translation>
    </message>
    <message>
        <source>2 フレーム(&amp;2)</source>
        <translation>&amp;2 frames</translation>
    </message>
    <message>
        <source>録音先(&amp;O)...</source>
        <translation>Rec&amp;ord to...</translation>
    </message>
    <message>
        <source>全画面(&amp;F)</source>
        <translation>&amp;Full screen</translation>
    </message>
    <message>
        <source>大きさ(&amp;S)</source>
        <translation>&amp;Size</translation>
    </message>
    <message>
        <source>縦横比 4:3(&amp;A)</source>
        <translation>&amp;Aspect 4:3</translation>
    </message>
    <message>
        <source>整数倍のみ(&amp;W)</source>
        <translation>&amp;Whole factors only</translation>
    </message>
    <message>
        <source>ブラウン管(&amp;C)</source>
        <translation>&amp;CRT look</translation>
    </message>
    <message>
        <source>なし(&amp;N)</source>
        <translation>&amp;None</translation>
    </message>
    <message>
        <source>走査線(&amp;S)</source>
        <translation>&amp;Scan lines</translation>
    </message>
    <message>
        <source>やわらかい管面(&amp;T)</source>
        <translation>Soft &amp;tube</translation>
    </message>
    <message>
        <source>PCG-8100の文字(&amp;P)</source>
        <translation>&amp;PCG-8100 glyphs</translation>
    </message>
    <message>
        <source>速度の表示(&amp;I)</source>
        <translation>Speed l&amp;ine</translation>
    </message>
    <message>
        <source>メッセージの表示(&amp;M)</source>
        <translation>&amp;Messages</translation>
    </message>
    <message>
        <source>機能設定(&amp;S)...</source>
        <translation>&amp;Machine settings...</translation>
    </message>
    <message>
        <source>HALTは割り込みを待つ(&amp;H)</source>
        <translation>&amp;HALT waits for an interrupt</translation>
    </message>
    <message>
        <source>未定義命令を読み飛ばす(&amp;U)</source>
        <translation>Step over &amp;undefined instructions</translation>
    </message>
    <message>
        <source>BackspaceをDELにする(&amp;B)</source>
        <translation>&amp;Backspace is DEL</translation>
    </message>
    <message>
        <source>言語 / Language(&amp;L)</source>
        <translation>&amp;Language / 言語</translation>
    </message>
    <message>
        <source>デスクトップに合わせる(&amp;A)</source>
        <translation>&amp;As the desktop</translation>
    </message>
    <message>
        <source>日本語(&amp;J)</source>
        <translation>&amp;Japanese (日本語)</translation>
    </message>
    <message>
        <source>Kivの設定</source>
        <translation>Kiv settings</translation>
    </message>
    <message>
        <source>本体(&amp;M)</source>
        <translation>&amp;Machine</translation>
    </message>
    <message>
        <source>ステート(&amp;X)</source>
        <translation>State (&amp;X)</translation>
    </message>
    <message>
        <source>編集(&amp;E)</source>
        <translation>&amp;Edit</translation>
    </message>
    <message>
        <source>テープ(&amp;T)</source>
        <translation>&amp;Tape</translation>
    </message>
    <message>
        <source>表示(&amp;V)</source>
        <translation>&amp;View</translation>
    </message>
    <message>
        <source>音(&amp;U)</source>
        <translation>So&amp;und</translation>
    </message>
    <message>
        <source>音を出す(&amp;S)</source>
        <translation>&amp;Sound on</translation>
    </message>
    <message>
        <source>設定(&amp;S)</source>
        <translation>&amp;Settings</translation>
    </message>
    <message>
        <source>ヘルプ(&amp;H)</source>
        <translation>&amp;Help</translation>
    </message>
    <message>
        <source>キーと設定(&amp;K)</source>
        <translation>&amp;Keys and settings</translation>
    </message>
    <message>
        <source>文字の画面は出ていません</source>
        <translation>There is no text on the screen</translation>
    </message>
    <message>
        <source>画面の文字をコピーしました</source>
        <translation>The text is on the clipboard</translation>
    </message>
    <message>
        <source>画面の絵をコピーしました</source>
        <translation>The picture is on the clipboard</translation>
    </message>
    <message>
        <source>再開</source>
        <translation>Running</translation>
    </message>
    <message>
        <source>一時停止</source>
        <translation>Paused</translation>
    </message>
    <message>
        <source>設定は保存されません</source>
        <translation>The settings are not saved</translation>
    </message>
    <message>
        <source>Kiv機能設定</source>
        <translation>Kiv settings</translation>
    </message>
    <message>
        <source>ステート</source>
        <translation>State</translation>
    </message>
    <message>
        <source>本体が動いていません</source>
        <translation>The machine is not running</translation>
    </message>
    <message>
        <source>読み込みを取り消しました</source>
        <translation>The load is taken back</translation>
    </message>
    <message>
        <source>ステートの保存</source>
        <translation>Save a state</translation>
    </message>
    <message>
        <source>ステートの選択</source>
        <translation>Choose a state</translation>
    </message>
    <message>
        <source>長すぎて打てません</source>
        <translation>Too long to be typed</translation>
    </message>
    <message>
        <source> 文字は打てません</source>
        <translation> characters cannot be typed</translation>
    </message>
    <message>
        <source>  (Escで中止)</source>
        <translation>  (Esc stops)</translation>
    </message>
    <message>
        <source>打つのをやめました</source>
        <translation>Typing has stopped</translation>
    </message>
    <message>
        <source>読めません</source>
        <translation>cannot be read</translation>
    </message>
    <message>
        <source>CreateWindowEx失敗</source>
        <translation>The window could not be made.</translation>
    </message>
    <message>
        <source>CreateMutex失敗</source>
        <translation>The sound lock could not be made.</translation>
    </message>
    <message>
        <source>問題なし</source>
        <translation>good</translation>
    </message>
    <message>
        <source>はい(&amp;Y)</source>
        <translation>&amp;Yes</translation>
    </message>
    <message>
        <source>いいえ(&amp;N)</source>
        <translation>&amp;No</translation>
    </message>
    <message>
        <source>場所:</source>
        <translation>Look in:</translation>
    </message>
    <message>
        <source>ファイル名(&amp;N):</source>
        <translation>File &amp;name:</translation>
    </message>
    <message>
        <source>種類:</source>
        <translation>Kind:</translation>
    </message>
    <message>
        <source>保存(&amp;S)</source>
        <translation>&amp;Save</translation>
    </message>
    <message>
        <source>開く(&amp;O)</source>
        <translation>&amp;Open</translation>
    </message>
    <message>
        <source>キャンセル</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>
ファイルが見つかりません。</source>
        <translation>
There is no such file.</translation>
    </message>
    <message>
        <source>
は既に存在します。置き換えますか?</source>
        <translation>
exists already. Replace it?</translation>
    </message>
    <message>
        <source>詳細(&amp;D)</source>
        <translation>&amp;Details</translation>
    </message>
    <message>
        <source>PCG-8100 ON</source>
        <translation>PCG-8100 on</translation>
    </message>
    <message>
        <source>PCG-8100 OFF</source>
        <translation>PCG-8100 off</translation>
    </message>
    <message>
        <source>音量を上げる(&amp;U)</source>
        <translation>Louder (&amp;U)</translation>
    </message>
    <message>
        <source>音量を下げる(&amp;D)</source>
        <translation>Quieter (&amp;D)</translation>
    </message>
    <message>
        <source>録音(&amp;R)</source>
        <translation>&amp;Record to a WAV file</translation>
    </message>
    <message>
        <source>録画(&amp;R)</source>
        <translation>&amp;Record a video</translation>
    </message>
    <message>
        <source>本体のキーボード(&amp;K)</source>
        <translation>The machine's &amp;keyboard</translation>
    </message>
    <message>
        <source>キーを文字で読む(&amp;C)</source>
        <translation>Keys by &amp;character</translation>
    </message>
    <message>
        <source>ゲームパッド(&amp;G)...</source>
        <translation>&amp;Gamepads...</translation>
    </message>
    <message>
        <source>音量 </source>
        <translation>Volume </translation>
    </message>
    <message>
        <source>録画開始: </source>
        <translation>Recording a video: </translation>
    </message>
    <message>
        <source>録音開始: </source>
        <translation>Recording the sound: </translation>
    </message>
    <message>
        <source>前の録音・録画を書き込んでいます</source>
        <translation>The recording before is still being written</translation>
    </message>
    <message>
        <source>ffmpegがありません (Debianのパッケージ ffmpeg)</source>
        <translation>ffmpeg is not there (Debian's package ffmpeg)</translation>
    </message>
    <message>
        <source>ffmpegが途中で終わりました</source>
        <translation>ffmpeg ended too early</translation>
    </message>
    <message>
        <source>書き込みが間に合いません</source>
        <translation>The computer is too slow to write it</translation>
    </message>
    <message>
        <source>WAVファイルの最大の長さです</source>
        <translation>a WAV file cannot be longer</translation>
    </message>
    <message>
        <source>キーは文字のとおり</source>
        <translation>Keys by character</translation>
    </message>
    <message>
        <source>キーは位置のとおり</source>
        <translation>Keys by position</translation>
    </message>
    <message>
        <source>本体のキーボード</source>
        <translation>The machine's keyboard</translation>
    </message>
    <message>
        <source>青: PCのキー   右クリック: 押したままにする</source>
        <translation>Blue: the key on your keyboard   Right click: holds a key down</translation>
    </message>
    <message>
        <source>無変換</source>
        <translation>Muhenkan</translation>
    </message>
    <message>
        <source>無変換、右Alt</source>
        <translation>right Alt</translation>
    </message>
    <message>
        <source>カナ</source>
        <translation>Kana</translation>
    </message>
    <message>
        <source>なし</source>
        <translation>None</translation>
    </message>
    <message>
        <source>スペース</source>
        <translation>Space</translation>
    </message>
    <message>
        <source>テンキー </source>
        <translation>Ten-key </translation>
    </message>
    <message>
        <source>ゲームパッド</source>
        <translation>Gamepads</translation>
    </message>
    <message>
        <source>ゲームパッドを使う(&amp;G)</source>
        <translation>Use &amp;gamepads</translation>
    </message>
    <message>
        <source>ゲームパッドはつながっていません</source>
        <translation>No gamepad is connected</translation>
    </message>
    <message>
        <source>上(&amp;U)</source>
        <translation>&amp;Up</translation>
    </message>
    <message>
        <source>下(&amp;D)</source>
        <translation>&amp;Down</translation>
    </message>
    <message>
        <source>左(&amp;L)</source>
        <translation>&amp;Left</translation>
    </message>
    <message>
        <source>右(&amp;R)</source>
        <translation>&amp;Right</translation>
    </message>
    <message>
        <source>ボタンA(&amp;A)</source>
        <translation>Button &amp;A</translation>
    </message>
    <message>
        <source>ボタンB(&amp;B)</source>
        <translation>Button &amp;B</translation>
    </message>
    <message>
        <source>ボタンX(&amp;X)</source>
        <translation>Button &amp;X</translation>
    </message>
    <message>
        <source>ボタンY(&amp;Y)</source>
        <translation>Button &amp;Y</translation>
    </message>
    <message>
        <source>左肩(&amp;E)</source>
        <translation>L&amp;eft shoulder</translation>
    </message>
    <message>
        <source>右肩(&amp;I)</source>
        <translation>R&amp;ight shoulder</translation>
    </message>
    <message>
        <source>BACK(&amp;K)</source>
        <translation>Bac&amp;k</translation>
    </message>
    <message>
        <source>START(&amp;T)</source>
        <translation>S&amp;tart</translation>
    </message>
    <message>
        <source>デバッガ(&amp;G)</source>
        <translation>Debu&amp;gger</translation>
    </message>
    <message>
        <source>Kiv デバッガ</source>
        <translation>Kiv debugger</translation>
    </message>
    <message>
        <source>デバッガが接続しました</source>
        <translation>A debugger is attached</translation>
    </message>
    <message>
        <source>デバッガが離れました</source>
        <translation>The debugger has gone</translation>
    </message>
    <message>
        <source>通信のデバッガが使っています</source>
        <translation>A debugger on the wire has the machine</translation>
    </message>
    <message>
        <source>レジスタ</source>
        <translation>Registers</translation>
    </message>
    <message>
        <source>スタック</source>
        <translation>Stack</translation>
    </message>
    <message>
        <source>メモリ</source>
        <translation>Memory</translation>
    </message>
    <message>
        <source>コンソール</source>
        <translation>Console</translation>
    </message>
    <message>
        <source>ブレークポイント</source>
        <translation>Breakpoints</translation>
    </message>
    <message>
        <source>デバイス</source>
        <translation>Devices</translation>
    </message>
    <message>
        <source>実行の跡</source>
        <translation>Last instructions</translation>
    </message>
    <message>
        <source>続ける / 止める(&amp;G)</source>
        <translation>&amp;Go / stop</translation>
    </message>
    <message>
        <source>一命令(&amp;I)</source>
        <translation>&amp;Into</translation>
    </message>
    <message>
        <source>呼び出しを越えて(&amp;O)</source>
        <translation>&amp;Over</translation>
    </message>
    <message>
        <source>戻りまで(&amp;U)</source>
        <translation>O&amp;ut</translation>
    </message>
    <message>
        <source>カーソルまで(&amp;C)</source>
        <translation>To &amp;cursor</translation>
    </message>
    <message>
        <source>次の画面まで(&amp;F)</source>
        <translation>To next &amp;frame</translation>
    </message>
    <message>
        <source>一命令戻る(&amp;B)</source>
        <translation>&amp;Back</translation>
    </message>
    <message>
        <source>呼び出しを越えて戻る(&amp;V)</source>
        <translation>Back o&amp;ver</translation>
    </message>
    <message>
        <source>呼び出しへ戻る(&amp;R)</source>
        <translation>Back to the call (&amp;R)</translation>
    </message>
    <message>
        <source>前の画面へ戻る(&amp;P)</source>
        <translation>Back to the &amp;previous frame</translation>
    </message>
    <message>
        <source>前の停止点へ戻る(&amp;S)</source>
        <translation>Back to the last &amp;stop</translation>
    </message>
    <message>
        <source>実行</source>
        <translation>Run</translation>
    </message>
    <message>
        <source>実行(&amp;R)</source>
        <translation>&amp;Run</translation>
    </message>
    <message>
        <source>ブレークポイント(&amp;K)</source>
        <translation>Brea&amp;kpoint</translation>
    </message>
    <message>
        <source>閉じる(&amp;X)</source>
        <translation>Close (&amp;X)</translation>
    </message>
    <message>
        <source>番地かラベル、空なら次の命令</source>
        <translation>Address or label; empty: the next instruction</translation>
    </message>
    <message>
        <source>ここまで実行</source>
        <translation>Run to here</translation>
    </message>
    <message>
        <source>次はここから実行</source>
        <translation>Run from here next</translation>
    </message>
    <message>
        <source>コマンド: help で一覧</source>
        <translation>Command; help lists them</translation>
    </message>
    <message>
        <source>: 値が大きすぎます</source>
        <translation>: too large a value</translation>
    </message>
    <message>
        <source>番地: $C000, HL, ラベル</source>
        <translation>Address: $C000, HL, a label</translation>
    </message>
    <message>
        <source>: 16進数で2桁です</source>
        <translation>: two hexadecimal digits are wanted</translation>
    </message>
    <message>
        <source>削除(&amp;D)</source>
        <translation>&amp;Delete</translation>
    </message>
    <message>
        <source>実行中</source>
        <translation>Running</translation>
    </message>
    <message>
        <source>停止中</source>
        <translation>Stopped</translation>
    </message>
    <message>
        <source>ステートのファイルではありません</source>
        <translation>not a saved state</translation>
    </message>
    <message>
        <source>別の版のKivのステートです</source>
        <translation>a state of another version of Kiv</translation>
    </message>
    <message>
        <source>壊れています (途中で切れたか、書き換わったか)</source>
        <translation>damaged (cut off, or bytes changed)</translation>
    </message>
    <message>
        <source>別のROMイメージで作られたステートです</source>
        <translation>a state made with other ROM images</translation>
    </message>
    <message>
        <source>このときのテープが入っていません</source>
        <translation>the tape of that moment is not in the deck</translation>
    </message>
    <message>
        <source>テープを入れるメモリが足りません</source>
        <translation>not enough memory for the tape</translation>
    </message>
    <message>
        <source> バイト: 上限は </source>
        <translation> bytes, more than </translation>
    </message>
    <message>
        <source> バイト: 最低 </source>
        <translation> bytes, fewer than </translation>
    </message>
    <message>
        <source>今のフォルダがなくなっています</source>
        <translation>the current directory is gone</translation>
    </message>
    <message>
        <source>テープ再生: </source>
        <translation>Tape playing: </translation>
    </message>
    <message>
        <source>テープ停止: </source>
        <translation>Tape stopped: </translation>
    </message>
    <message>
        <source>テープ巻き戻し: </source>
        <translation>Tape rewound: </translation>
    </message>
    <message>
        <source>テープを取り出しました</source>
        <translation>The tape is out</translation>
    </message>
    <message>
        <source>フォルダ(&amp;F):</source>
        <translation>&amp;Folder:</translation>
    </message>
    <message>
        <source>中止</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>デバッガが実行しています</source>
        <translation>The debugger is at work</translation>
    </message>
    <message>
        <source>: この文字は書けません</source>
        <translation>: this character cannot be written</translation>
    </message>
    <message>
        <source>プロファイル</source>
        <translation>Profile</translation>
    </message>
    <message>
        <source>デスクトップの配色(&amp;D)</source>
        <translation>Colours of the &amp;desktop</translation>
    </message>
    <message>
        <source>明るい配色(&amp;L)</source>
        <translation>&amp;Light colours</translation>
    </message>
    <message>
        <source>暗い配色(&amp;K)</source>
        <translation>Dar&amp;k colours</translation>
    </message>
    <message>
        <source>消去(&amp;E)</source>
        <translation>Cl&amp;ear</translation>
    </message>
    <message>
        <source>ルーチン別</source>
        <translation>By routine</translation>
    </message>
    <message>
        <source>番地別</source>
        <translation>By address</translation>
    </message>
    <message>
        <source>番地</source>
        <translation>Address</translation>
    </message>
    <message>
        <source>名前</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Tステート</source>
        <translation>T-states</translation>
    </message>
    <message>
        <source>呼び出し先込み</source>
        <translation>With calls</translation>
    </message>
    <message>
        <source>回数</source>
        <translation>Times</translation>
    </message>
    <message>
        <source>ソース</source>
        <translation>Source</translation>
    </message>
    <message>
        <source>開始(&amp;S)</source>
        <translation>&amp;Start</translation>
    </message>
</context>
</TS>
