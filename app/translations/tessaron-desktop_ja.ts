<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja_JP" sourcelanguage="en">
    <context>
        <name>AudioPanel</name>
        <message>
            <source>Audio</source>
            <translation>オーディオ</translation>
        </message>
        <message>
            <source>Sound for every CD player</source>
            <translation>どの CD プレーヤーでも聴ける音声</translation>
        </message>
        <message>
            <source>There is no track yet. Drop sound files into the window first.</source>
            <translation>トラックがまだありません。先に音声ファイルをウインドウにドロップしてください。</translation>
        </message>
        <message>
            <source>Audio CD</source>
            <translation>オーディオ CD</translation>
        </message>
        <message>
            <source>Adding</source>
            <translation>追加中</translation>
        </message>
        <message>
            <source>%1 is left out: a CD has 99 tracks at most.</source>
            <translation>%1 を除きました: CD のトラックは 99 までです。</translation>
        </message>
        <message>
            <source>No sound files were found.</source>
            <translation>音声ファイルが見つかりません。</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) could not be added.</source>
            <translation>
                <numerusform>%n 個のファイルを追加できませんでした。</numerusform>
            </translation>
        </message>
        <message>
            <source>Not all that the cue sheet says was taken.</source>
            <translation>キューシートの内容の一部は取り込まれませんでした。</translation>
        </message>
        <message>
            <source>%1 has a pause of %2 s in front of track 1, which is left out: every disc begins with two seconds of silence.</source>
            <translation>%1 にはトラック 1 の前に %2 秒の間隔がありますが、省かれます。どのディスクも 2 秒の無音で始まります。</translation>
        </message>
    </context>
    <context>
        <name>DataPanel</name>
        <message>
            <source>Data</source>
            <translation>データ</translation>
        </message>
        <message>
            <source>Files and folders</source>
            <translation>ファイルとフォルダ</translation>
        </message>
        <message>
            <source>The disc is empty. Drop files and folders into the window first.</source>
            <translation>ディスクは空です。まずファイルやフォルダをウィンドウにドロップしてください。</translation>
        </message>
        <message>
            <source>Save Images Into a New Folder</source>
            <translation>新しいフォルダーにイメージを保存</translation>
        </message>
        <message>
            <source>New folder:</source>
            <translation>新しいフォルダー:</translation>
        </message>
        <message>
            <source>Save Projects Into a New Folder</source>
            <translation>新しいフォルダーにプロジェクトを保存</translation>
        </message>
    </context>
    <context>
        <name>DiscRowLook</name>
        <message>
            <source>File</source>
            <translation>ファイル</translation>
        </message>
        <message>
            <source>Folder</source>
            <translation>フォルダ</translation>
        </message>
        <message>
            <source>New folder</source>
            <translation>新規フォルダ</translation>
        </message>
        <message>
            <source>Link</source>
            <translation>リンク</translation>
        </message>
        <message>
            <source>Device or pipe</source>
            <translation>デバイスまたはパイプ</translation>
        </message>
        <message>
            <source>The file is missing: it was moved or removed.</source>
            <translation>ファイルが見つかりません。移動または削除されました。</translation>
        </message>
        <message>
            <source>You may not read this file.</source>
            <translation>このファイルを読む権限がありません。</translation>
        </message>
    </context>
    <context>
        <name>DiscWords</name>
        <message>
            <source>A file in the place of a disc, room for %1</source>
            <translation>ディスクの代わりのファイル、%1 書き込み可能</translation>
        </message>
        <message>
            <source>%1, room for %2. What is on it will be replaced.</source>
            <translation>%1、%2 書き込み可能。今の内容は置き換えられます。</translation>
        </message>
        <message>
            <source>%1, blank, %2 free</source>
            <translation>%1、空、空き %2</translation>
        </message>
        <message>
            <source>Disc</source>
            <translation>ディスク</translation>
        </message>
        <message>
            <source>There is no disc in the drive.</source>
            <translation>ドライブにディスクが入っていません。</translation>
        </message>
        <message>
            <source>%1, written in part, %2 free</source>
            <translation>%1、一部書き込み済み、空き %2</translation>
        </message>
        <message>
            <source>%1, full. It can be erased.</source>
            <translation>%1、満杯。消去できます。</translation>
        </message>
        <message>
            <source>%1: nothing can be added to it.</source>
            <translation>%1: 追記できません。</translation>
        </message>
        <message>
            <source>%1: this drive can neither read nor write it.</source>
            <translation>%1: このドライブでは読み書きできません。</translation>
        </message>
        <message>
            <source>The drive does not say what is in it.</source>
            <translation>ドライブの中身が分かりません。</translation>
        </message>
        <message>
            <source>%1/s</source>
            <translation>%1/秒</translation>
        </message>
        <message>
            <source>The disc has to be erased before it can be written again.</source>
            <translation>再び書き込むには、ディスクの消去が必要になります。</translation>
        </message>
        <message>
            <source>What is on the disc then is worth nothing, but it can be written again.</source>
            <translation>ディスクの内容は無効になりますが、もう一度書き込めます。</translation>
        </message>
        <message>
            <source>The disc cannot be used any more then.</source>
            <translation>そのディスクは使えなくなります。</translation>
        </message>
        <message>
            <source>%1, room for %2 in all</source>
            <translation>%1、全体で %2 の空き</translation>
        </message>
    </context>
    <context>
        <name>ImagePanel</name>
        <message>
            <source>Image</source>
            <translation>イメージ</translation>
        </message>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… ほか %n</numerusform>
            </translation>
        </message>
        <message>
            <source>Images of discs that are there already</source>
            <translation>すでにあるディスクイメージ</translation>
        </message>
        <message>
            <source>No image is open. Open one first.</source>
            <translation>イメージが開かれていません。先に開いてください。</translation>
        </message>
        <message>
            <source>Looking at %1</source>
            <translation>%1 を調べています</translation>
        </message>
        <message>
            <source>%1: no filesystem was found in it.</source>
            <translation>%1: ファイルシステムが見つかりません。</translation>
        </message>
        <message numerus="yes">
            <source>The image is not as it should be in %n place(s).</source>
            <translation>
                <numerusform>イメージに %n か所の問題があります。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s)</source>
            <translation>
                <numerusform>%n トラック</numerusform>
            </translation>
        </message>
        <message>
            <source>The description of the image was read with reservations.</source>
            <translation>イメージの記述は一部を読み替えました。</translation>
        </message>
        <message>
            <source>Open Image</source>
            <translation>イメージを開く</translation>
        </message>
        <message>
            <source>Disc images (*.iso *.bin *.img *.vant *.udf *.cdr *.cue *.ccd *.toc)</source>
            <translation>ディスクイメージ (*.iso *.bin *.img *.vant *.udf *.cdr *.cue *.ccd *.toc)</translation>
        </message>
        <message>
            <source>All files (*)</source>
            <translation>すべてのファイル (*)</translation>
        </message>
        <message>
            <source>Compare with a Folder</source>
            <translation>フォルダーと比較</translation>
        </message>
        <message>
            <source>Take All Tracks Out Into a Folder</source>
            <translation>すべてのトラックをフォルダーに取り出す</translation>
        </message>
        <message>
            <source>Take Track %1 Out</source>
            <translation>トラック %1 を取り出す</translation>
        </message>
        <message>
            <source>New folder:</source>
            <translation>新しいフォルダー:</translation>
        </message>
        <message>
            <source>%1 tracks</source>
            <translation>%1 のトラック</translation>
        </message>
        <message>
            <source>%1, track %2</source>
            <translation>%1、トラック %2</translation>
        </message>
        <message>
            <source>Choose files of one filesystem only.</source>
            <translation>1 つのファイルシステムのファイルだけを選んでください。</translation>
        </message>
        <message>
            <source>Take Files Out Into a Folder</source>
            <translation>ファイルをフォルダーに取り出す</translation>
        </message>
        <message>
            <source>Choose files or folders of a filesystem first.</source>
            <translation>まずファイルシステムのファイルかフォルダーを選んでください。</translation>
        </message>
        <message>
            <source>Paste it in the file manager.</source>
            <translation>ファイルマネージャーで貼り付けてください。</translation>
        </message>
        <message>
            <source>Drag it once more to drop it.</source>
            <translation>もう一度ドラッグするとドロップできます。</translation>
        </message>
        <message>
            <source>Files are being taken out already. Wait for the end of that, or stop it.</source>
            <translation>ファイルはすでに取り出し中です。終わるのを待つか、中止してください。</translation>
        </message>
    </context>
    <context>
        <name>JobOutcomes</name>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>…ほか %n 件</numerusform>
            </translation>
        </message>
        <message>
            <source>%1: the file is missing</source>
            <translation>%1: ファイルが見つかりません</translation>
        </message>
        <message>
            <source>The folder %1 could not be read: %2</source>
            <translation>フォルダ %1 を読めませんでした: %2</translation>
        </message>
        <message>
            <source>The name of the disc could not be stored as it was asked for.</source>
            <translation>ディスク名を指定どおりに保存できませんでした。</translation>
        </message>
        <message>
            <source>%1 was saved: %2, %3.</source>
            <translation>%1 を保存しました: %2、%3。</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n ファイル</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) could not be stored as they are.</source>
            <translation>
                <numerusform>%n 項目はそのまま保存できませんでした。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n folder(s) could not be read.</source>
            <translation>
                <numerusform>%n フォルダを読めませんでした。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) are not on it: their files are missing.</source>
            <translation>
                <numerusform>ファイルが見つからないため、%n 項目は含まれていません。</numerusform>
            </translation>
        </message>
        <message>
            <source>Nothing is missing.</source>
            <translation>欠けているものはありません。</translation>
        </message>
        <message>
            <source>Nothing is missing; some names are changed in some filesystems.</source>
            <translation>欠けているものはありません。一部のファイルシステムでは名前が変わっています。</translation>
        </message>
        <message numerus="yes">
            <source>The image differs from the files in %n place(s).</source>
            <translation>
                <numerusform>イメージは %n か所でファイルと異なります。</numerusform>
            </translation>
        </message>
        <message>
            <source>The image was compared with the files: all %1 are the same.</source>
            <translation>イメージをファイルと比較しました。%1 すべて一致しています。</translation>
        </message>
        <message>
            <source>The name of the disc is another one.</source>
            <translation>ディスクの名前は別のものになりました。</translation>
        </message>
        <message numerus="yes">
            <source>The drive had to wait for data %n time(s).</source>
            <translation>
                <numerusform>ドライブがデータを %n 回待ちました。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s)</source>
            <translation>
                <numerusform>%n トラック</numerusform>
            </translation>
        </message>
        <message>
            <source>The writing was simulated, the disc is as it was: %1, %2, %3.</source>
            <translation>書き込みをシミュレートしました。ディスクは元のままです: %1、%2、%3。</translation>
        </message>
        <message>
            <source>The disc was written: %1, %2, %3.</source>
            <translation>ディスクに書き込みました: %1、%2、%3。</translation>
        </message>
        <message>
            <source>It was compared with what was to be written, and is the same.</source>
            <translation>書き込む内容と比較し、一致しました。</translation>
        </message>
        <message>
            <source>Something of the image is not on it.</source>
            <translation>イメージの一部が書き込まれていません。</translation>
        </message>
        <message numerus="yes">
            <source>Track %1, %2: the sound is damaged in %n place(s)</source>
            <translation>
                <numerusform>トラック %1、%2: 音声が %n か所で破損しています</numerusform>
            </translation>
        </message>
        <message>
            <source>Track %1 is shorter than four seconds, which many drives refuse</source>
            <translation>トラック %1 は 4 秒未満で、多くのドライブが受け付けません</translation>
        </message>
        <message>
            <source>Some texts could not be put into the CD-TEXT.</source>
            <translation>CD-TEXT に入れられないテキストがあります。</translation>
        </message>
        <message>
            <source>Some of the sound is damaged.</source>
            <translation>音声の一部が破損しています。</translation>
        </message>
        <message>
            <source>Track %1: %2, %3</source>
            <translation>トラック %1: %2、%3</translation>
        </message>
        <message numerus="yes">
            <source>%n damaged sector(s)</source>
            <translation>
                <numerusform>破損セクター %n</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n sector(s) cut</source>
            <translation>
                <numerusform>切り詰めたセクター %n</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s) were taken out.</source>
            <translation>
                <numerusform>%n トラックを取り出しました。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s) were taken out, with damage.</source>
            <translation>
                <numerusform>%n トラックを取り出しましたが、破損があります。</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 takes the place of the file that the disc had.</source>
            <translation>%1 はディスクにあったファイルと置き換わりました。</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) that it had are kept.</source>
            <translation>
                <numerusform>ディスクにあったファイル %n 個は残っています。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) that it had were replaced.</source>
            <translation>
                <numerusform>ディスクにあったファイル %n 個が置き換えられました。</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 is %2 now</source>
            <translation>%1 は %2 になりました</translation>
        </message>
        <message>
            <source>What was taken out before stays: %1.</source>
            <translation>それまでに取り出したものは残ります: %1。</translation>
        </message>
        <message>
            <source>Taken out of %1: %2.</source>
            <translation>%1 から取り出しました: %2。</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) could not be.</source>
            <translation>
                <numerusform>%n 件は取り出せませんでした。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) have another name.</source>
            <translation>
                <numerusform>%n 件は名前が変わりました。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) do not have their dates.</source>
            <translation>
                <numerusform>%n 件は日付を引き継げませんでした。</numerusform>
            </translation>
        </message>
        <message>
            <source>Some of the sound, or of its texts, is not on it as it should be.</source>
            <translation>音声またはそのテキストの一部が、あるべき形で書き込まれていません。</translation>
        </message>
        <message>
            <source>%1 is broken in places; silence stands for them</source>
            <translation>%1 には壊れている箇所があり、そこは無音になります</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) were converted.</source>
            <translation>
                <numerusform>%n 個のファイルを変換しました。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) could not be.</source>
            <translation>
                <numerusform>%n 個のファイルは変換できませんでした。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are broken in places.</source>
            <translation>
                <numerusform>%n 個のファイルに壊れている箇所があります。</numerusform>
            </translation>
        </message>
        <message>
            <source>Computers cannot be started from it any more.</source>
            <translation>このディスクからはもうコンピューターを起動できません。</translation>
        </message>
    </context>
    <context>
        <name>Media</name>
        <message>
            <source>Any size</source>
            <translation>任意のサイズ</translation>
        </message>
        <message>
            <source>CD, 74 minutes</source>
            <translation>CD (74 分)</translation>
        </message>
        <message>
            <source>CD, 80 minutes</source>
            <translation>CD (80 分)</translation>
        </message>
        <message>
            <source>DVD</source>
            <translation>DVD</translation>
        </message>
        <message>
            <source>DVD, two layers</source>
            <translation>DVD (2 層)</translation>
        </message>
        <message>
            <source>Blu-ray</source>
            <translation>Blu-ray</translation>
        </message>
        <message>
            <source>Blu-ray, two layers</source>
            <translation>Blu-ray (2 層)</translation>
        </message>
    </context>
    <context>
        <name>Project</name>
        <message>
            <source>%1 cannot be opened: %2</source>
            <translation>%1 を開けません: %2</translation>
        </message>
        <message>
            <source>it is too long for a project</source>
            <translation>プロジェクトとしては大きすぎます</translation>
        </message>
        <message>
            <source>it is not a project</source>
            <translation>プロジェクトではありません</translation>
        </message>
        <message>
            <source>it was saved by a newer version of this program</source>
            <translation>新しいバージョンのプログラムで保存されています</translation>
        </message>
        <message>
            <source>it names an item that cannot be on a disc</source>
            <translation>ディスクに入れられない項目が含まれています</translation>
        </message>
        <message>
            <source>it has more than 99 tracks</source>
            <translation>トラックが 99 を超えています</translation>
        </message>
        <message>
            <source>it has a track without a file</source>
            <translation>ファイルのないトラックがあります</translation>
        </message>
        <message>
            <source>it is not a project, or it is damaged</source>
            <translation>プロジェクトではないか、壊れています</translation>
        </message>
    </context>
    <context>
        <name>ShareSaving</name>
        <message>
            <source>There is something of this name already. Name a new folder.</source>
            <translation>同じ名前のものがすでにあります。新しいフォルダーを指定してください。</translation>
        </message>
        <message>
            <source>The folder cannot be made: %1</source>
            <translation>フォルダーを作成できません: %1</translation>
        </message>
        <message>
            <source>disc</source>
            <translation>ディスク</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) are on no disc: their files are missing.</source>
            <translation>
                <numerusform>%n 件はファイルが見つからないため、どのディスクにも入っていません。</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioConversion</name>
        <message>
            <source>%1: the file is missing</source>
            <translation>%1: ファイルがありません</translation>
        </message>
        <message>
            <source>%1 is converted as a whole, not track by track</source>
            <translation>%1 はトラックごとではなく、全体が変換されます</translation>
        </message>
        <message>
            <source>There is no file to convert.</source>
            <translation>変換するファイルがありません。</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioConvertDialog</name>
        <message>
            <source>&amp;Titles and covers, too</source>
            <translation>タイトルとカバーも含める(&amp;T)</translation>
        </message>
        <message>
            <source>Convert Sound Files</source>
            <translation>音声ファイルの変換</translation>
        </message>
        <message>
            <source>WAVE (not compressed)</source>
            <translation>WAVE（非圧縮）</translation>
        </message>
        <message>
            <source>AIFF (not compressed)</source>
            <translation>AIFF（非圧縮）</translation>
        </message>
        <message>
            <source>MP3, about 128 kbit/s</source>
            <translation>MP3、約128 kbit/s</translation>
        </message>
        <message>
            <source>MP3, about 160 kbit/s</source>
            <translation>MP3、約160 kbit/s</translation>
        </message>
        <message>
            <source>MP3, 128 kbit/s throughout</source>
            <translation>MP3、固定128 kbit/s</translation>
        </message>
        <message>
            <source>MP3, 160 kbit/s throughout</source>
            <translation>MP3、固定160 kbit/s</translation>
        </message>
        <message>
            <source>MP3 files can be made when the program lame is installed.</source>
            <translation>プログラム lame をインストールすると、MP3 ファイルを作成できます。</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are converted; the originals stay as they are.</source>
            <translation>
                <numerusform>%n 個のファイルを変換します。元のファイルはそのまま残ります。</numerusform>
            </translation>
        </message>
        <message>
            <source>&amp;Format:</source>
            <translation>形式(&amp;F):</translation>
        </message>
        <message>
            <source>C&amp;hoose…</source>
            <translation>選択(&amp;H)…</translation>
        </message>
        <message>
            <source>&amp;Into the folder:</source>
            <translation>保存先フォルダー(&amp;I):</translation>
        </message>
        <message>
            <source>Into the folder</source>
            <translation>保存先フォルダー</translation>
        </message>
        <message>
            <source>&amp;Convert</source>
            <translation>変換(&amp;C)</translation>
        </message>
        <message>
            <source>Choose a Folder</source>
            <translation>フォルダーの選択</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioIntake</name>
        <message>
            <source>%1 kHz</source>
            <translation>%1 kHz</translation>
        </message>
        <message>
            <source>mono</source>
            <translation>モノラル</translation>
        </message>
        <message>
            <source>stereo</source>
            <translation>ステレオ</translation>
        </message>
        <message numerus="yes">
            <source>%n channels</source>
            <translation>
                <numerusform>%n チャンネル</numerusform>
            </translation>
        </message>
        <message>
            <source>The folder %1 cannot be listed: %2</source>
            <translation>フォルダー %1 を読み込めません: %2</translation>
        </message>
        <message>
            <source>%1 holds no sound.</source>
            <translation>%1 には音声がありません。</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioTextDialog</name>
        <message>
            <source>CD-TEXT</source>
            <translation>CD-TEXT</translation>
        </message>
        <message>
            <source>&amp;Texts for players that show them:</source>
            <translation>表示に対応したプレーヤー用のテキスト(&amp;T):</translation>
        </message>
        <message>
            <source>Catalogue &amp;number (EAN, 13 digits):</source>
            <translation>カタログ番号 (EAN、13 桁)(&amp;N):</translation>
        </message>
        <message>
            <source>Title</source>
            <translation>タイトル</translation>
        </message>
        <message>
            <source>Performer</source>
            <translation>演奏者</translation>
        </message>
        <message>
            <source>Songwriter</source>
            <translation>作詞者</translation>
        </message>
        <message>
            <source>Composer</source>
            <translation>作曲者</translation>
        </message>
        <message>
            <source>Arranger</source>
            <translation>編曲者</translation>
        </message>
        <message>
            <source>Message</source>
            <translation>メッセージ</translation>
        </message>
        <message>
            <source>ISRC</source>
            <translation>ISRC</translation>
        </message>
        <message>
            <source>Disc</source>
            <translation>ディスク</translation>
        </message>
        <message>
            <source>Track %1</source>
            <translation>トラック %1</translation>
        </message>
        <message>
            <source>%1 is not an ISRC: that has two letters, three letters or digits, and seven digits.</source>
            <translation>%1 は ISRC ではありません。英字 2 文字、英数字 3 文字、数字 7 文字です。</translation>
        </message>
        <message>
            <source>A catalogue number has 13 digits.</source>
            <translation>カタログ番号は 13 桁です。</translation>
        </message>
        <message>
            <source>&amp;Add Language</source>
            <translation>言語を追加(&amp;A)</translation>
        </message>
        <message>
            <source>&amp;Remove Language</source>
            <translation>言語を削除(&amp;R)</translation>
        </message>
        <message>
            <source>&amp;Language:</source>
            <translation>言語(&amp;L):</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioTrackModel</name>
        <message numerus="yes">
            <source>Add %n Track(s)</source>
            <translation>
                <numerusform>%n トラックを追加</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Remove %n Track(s)</source>
            <translation>
                <numerusform>%n トラックを取り除く</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Move %n Track(s)</source>
            <translation>
                <numerusform>%n トラックを移動</numerusform>
            </translation>
        </message>
        <message>
            <source>Change Texts</source>
            <translation>テキストを変更</translation>
        </message>
        <message>
            <source>No.</source>
            <translation>番号</translation>
        </message>
        <message>
            <source>Title</source>
            <translation>タイトル</translation>
        </message>
        <message>
            <source>Performer</source>
            <translation>アーティスト</translation>
        </message>
        <message>
            <source>Length</source>
            <translation>長さ</translation>
        </message>
        <message>
            <source>File</source>
            <translation>ファイル</translation>
        </message>
        <message>
            <source>Change Pauses</source>
            <translation>間隔を変更</translation>
        </message>
        <message>
            <source>%1 s</source>
            <translation>%1 秒</translation>
        </message>
        <message>
            <source>The file is missing: it was moved or removed.</source>
            <translation>ファイルが見つかりません。移動されたか削除されました。</translation>
        </message>
        <message>
            <source>ISRC %1</source>
            <translation>ISRC %1</translation>
        </message>
        <message>
            <source>Sound in the pause in front of it</source>
            <translation>手前の間隔に音があります</translation>
        </message>
        <message>
            <source>Change Pause</source>
            <translation>間隔を変更</translation>
        </message>
        <message>
            <source>Pause</source>
            <translation>間隔</translation>
        </message>
        <message>
            <source>Sound</source>
            <translation>波形</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioView</name>
        <message>
            <source>&amp;Without a break where there is no pause</source>
            <translation>間隔がないところは途切れなくつなぐ(&amp;W)</translation>
        </message>
        <message>
            <source>Common &amp;loudness</source>
            <translation>音量をそろえる(&amp;L)</translation>
        </message>
        <message>
            <source>CD-&amp;TEXT</source>
            <translation>CD-TEXT(&amp;T)</translation>
        </message>
        <message>
            <source>Add &amp;Tracks…</source>
            <translation>トラックを追加(&amp;T)…</translation>
        </message>
        <message>
            <source>Move &amp;Up</source>
            <translation>上へ(&amp;U)</translation>
        </message>
        <message>
            <source>Move &amp;Down</source>
            <translation>下へ(&amp;D)</translation>
        </message>
        <message>
            <source>&amp;Remove Tracks</source>
            <translation>トラックを取り除く(&amp;R)</translation>
        </message>
        <message>
            <source>&amp;Pause between tracks:</source>
            <translation>トラックの間隔(&amp;P):</translation>
        </message>
        <message>
            <source> s</source>
            <translation> 秒</translation>
        </message>
        <message>
            <source>Titles and performers for players that show them</source>
            <translation>表示できるプレーヤーのためのタイトルとアーティスト</translation>
        </message>
        <message>
            <source>Brings the whole disc to the loudness that is usual, in the same measure for all tracks</source>
            <translation>ディスク全体を同じ割合で標準の音量にします</translation>
        </message>
        <message>
            <source>T&amp;itle of the disc:</source>
            <translation>ディスクのタイトル(&amp;I):</translation>
        </message>
        <message>
            <source>P&amp;erformer:</source>
            <translation>アーティスト(&amp;E):</translation>
        </message>
        <message>
            <source>Tracks</source>
            <translation>トラック</translation>
        </message>
        <message>
            <source>Drop sound files here. They are played in this order.</source>
            <translation>音声ファイルをここにドロップ。この順に再生されます。</translation>
        </message>
        <message>
            <source>How full the disc is</source>
            <translation>ディスクの使用量</translation>
        </message>
        <message>
            <source>Length of the disc</source>
            <translation>ディスクの長さ</translation>
        </message>
        <message>
            <source>Kind of disc</source>
            <translation>ディスクの種類</translation>
        </message>
        <message>
            <source>CD, %1 minutes</source>
            <translation>CD (%1 分)</translation>
        </message>
        <message>
            <source>%1: %2 too long</source>
            <translation>%1: %2 長すぎます</translation>
        </message>
        <message>
            <source>%1, %2 free</source>
            <translation>%1、空き %2</translation>
        </message>
        <message>
            <source>Add Tracks</source>
            <translation>トラックを追加</translation>
        </message>
        <message>
            <source>&amp;CD-TEXT…</source>
            <translation>CD-TEXT(&amp;C)…</translation>
        </message>
        <message>
            <source>Change Texts</source>
            <translation>テキストを変更</translation>
        </message>
        <message>
            <source>Change Options</source>
            <translation>オプションを変更</translation>
        </message>
        <message>
            <source>Change the Kind of Disc</source>
            <translation>ディスクの種類を変更</translation>
        </message>
        <message>
            <source>There is no sound device, so nothing can be heard. The disc can be made all the same.</source>
            <translation>サウンドデバイスがないため試聴できません。ディスクは作成できます。</translation>
        </message>
        <message>
            <source>Con&amp;vert…</source>
            <translation>変換(&amp;V)…</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::BurnDialog</name>
        <message>
            <source>&amp;Look Again</source>
            <translation>再確認(&amp;L)</translation>
        </message>
        <message>
            <source>&amp;Compare the disc with the files afterwards</source>
            <translation>書き込み後にファイルと比較する(&amp;C)</translation>
        </message>
        <message>
            <source>Only &amp;simulate: the laser stays off</source>
            <translation>シミュレートのみ (レーザーは使いません)(&amp;S)</translation>
        </message>
        <message>
            <source>&amp;Eject the disc at the end</source>
            <translation>終了後にディスクを取り出す(&amp;E)</translation>
        </message>
        <message>
            <source>Burn a Disc</source>
            <translation>ディスクに書き込む</translation>
        </message>
        <message>
            <source>&amp;Drive:</source>
            <translation>ドライブ(&amp;D):</translation>
        </message>
        <message>
            <source>The disc in the drive</source>
            <translation>ドライブの中のディスク</translation>
        </message>
        <message>
            <source>Disc:</source>
            <translation>ディスク:</translation>
        </message>
        <message>
            <source>S&amp;peed:</source>
            <translation>速度(&amp;P):</translation>
        </message>
        <message>
            <source>&amp;Burn</source>
            <translation>書き込む(&amp;B)</translation>
        </message>
        <message>
            <source>E&amp;rase…</source>
            <translation>消去(&amp;R)…</translation>
        </message>
        <message>
            <source>As fast as it goes</source>
            <translation>最高速度</translation>
        </message>
        <message>
            <source>Erase it first, or put in another disc.</source>
            <translation>先に消去するか、別のディスクを入れてください。</translation>
        </message>
        <message>
            <source>Put in another disc.</source>
            <translation>別のディスクを入れてください。</translation>
        </message>
        <message>
            <source>It is too small: about %1 are to be written.</source>
            <translation>容量が足りません: 約 %1 を書き込みます。</translation>
        </message>
        <message>
            <source>The disc is being erased. That cannot be stopped.</source>
            <translation>ディスクを消去しています。途中で止められません。</translation>
        </message>
        <message>
            <source>Looking for drives…</source>
            <translation>ドライブを探しています…</translation>
        </message>
        <message>
            <source>Looking at the disc…</source>
            <translation>ディスクを調べています…</translation>
        </message>
        <message>
            <source>This computer has no optical drive. Connect one, and look again.</source>
            <translation>このコンピューターには光学ドライブがありません。接続して再確認してください。</translation>
        </message>
        <message>
            <source>Erase the Disc</source>
            <translation>ディスクの消去</translation>
        </message>
        <message>
            <source>Everything on the disc will be lost.</source>
            <translation>ディスクの内容はすべて失われます。</translation>
        </message>
        <message>
            <source>Erasing takes a minute or two and cannot be stopped.</source>
            <translation>消去には 1、2 分かかり、途中で止められません。</translation>
        </message>
        <message>
            <source>&amp;Erase</source>
            <translation>消去(&amp;E)</translation>
        </message>
        <message>
            <source>Erasing</source>
            <translation>消去中</translation>
        </message>
        <message numerus="yes">
            <source>%n of its files will be replaced: %1</source>
            <translation>
                <numerusform>ディスクのファイル %n 個が置き換えられます: %1</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source> and %n more</source>
            <translation>
                <numerusform> ほか %n 個</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) on it stay as they are; %1 are added.</source>
            <translation>
                <numerusform>ディスクのファイル %n 個はそのまま残り、%1 が追加されます。</numerusform>
            </translation>
        </message>
        <message>
            <source>What is on it stays as it is; %1 are added.</source>
            <translation>ディスクの内容はそのまま残り、%1 が追加されます。</translation>
        </message>
        <message>
            <source>Computers can be started from it now, and not any more afterwards.</source>
            <translation>現在はこのディスクからコンピューターを起動できますが、追加後はできなくなります。</translation>
        </message>
        <message>
            <source>&amp;Keep the disc open, so that more can be added to it</source>
            <translation>後で追加できるようにディスクを閉じない(&amp;K)</translation>
        </message>
        <message>
            <source>Looking at what is on it…</source>
            <translation>ディスクの内容を調べています…</translation>
        </message>
        <message>
            <source>&amp;Keep what is on the disc, and add to it</source>
            <translation>ディスクの内容を残して追加する(&amp;K)</translation>
        </message>
        <message>
            <source>Sound takes a CD-R or CD-RW. Put one in.</source>
            <translation>音声には CD-R か CD-RW が必要です。挿入してください。</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::CapacityBar</name>
        <message>
            <source>Kind of disc</source>
            <translation>ディスクの種類</translation>
        </message>
        <message>
            <source>What has to fit onto it</source>
            <translation>収めるディスク</translation>
        </message>
        <message>
            <source>Size of the disc</source>
            <translation>ディスクのサイズ</translation>
        </message>
        <message>
            <source>about %1</source>
            <translation>約 %1</translation>
        </message>
        <message>
            <source>%1: %2 too much</source>
            <translation>%1: %2 超過</translation>
        </message>
        <message>
            <source>%1, %2 free</source>
            <translation>%1、空き %2</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::CapacityMeter</name>
        <message>
            <source>How full the disc is</source>
            <translation>ディスクの使用量</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DataView</name>
        <message>
            <source>Add &amp;Files…</source>
            <translation>ファイルを追加(&amp;F)…</translation>
        </message>
        <message>
            <source>Add F&amp;older…</source>
            <translation>フォルダを追加(&amp;O)…</translation>
        </message>
        <message>
            <source>New Fol&amp;der</source>
            <translation>新規フォルダ(&amp;D)</translation>
        </message>
        <message>
            <source>&amp;Paste Files</source>
            <translation>ファイルを貼り付け(&amp;P)</translation>
        </message>
        <message>
            <source>&amp;Rename</source>
            <translation>名前を変更(&amp;R)</translation>
        </message>
        <message>
            <source>Re&amp;move from the Disc</source>
            <translation>ディスクから外す(&amp;M)</translation>
        </message>
        <message>
            <source>Opt&amp;ions…</source>
            <translation>オプション(&amp;I)…</translation>
        </message>
        <message>
            <source>Disc &amp;name:</source>
            <translation>ディスク名(&amp;N):</translation>
        </message>
        <message>
            <source>Find by name</source>
            <translation>名前で検索</translation>
        </message>
        <message>
            <source>Files on the disc</source>
            <translation>ディスクのファイル</translation>
        </message>
        <message>
            <source>Drop files and folders here</source>
            <translation>ここにファイルやフォルダをドロップ</translation>
        </message>
        <message>
            <source>They go onto the disc as you see them here. The originals stay where they are.</source>
            <translation>ここに表示されるとおりにディスクに入ります。元のファイルはそのまま残ります。</translation>
        </message>
        <message>
            <source>Some items could not be moved as they are.</source>
            <translation>一部の項目はそのままでは移動できませんでした。</translation>
        </message>
        <message>
            <source>Adding</source>
            <translation>追加中</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) found</source>
            <translation>
                <numerusform>%n 項目</numerusform>
            </translation>
        </message>
        <message>
            <source>Not everything was added as it is.</source>
            <translation>そのまま追加できなかったものがあります。</translation>
        </message>
        <message numerus="yes">
            <source>%n message(s).</source>
            <translation>
                <numerusform>%n 件。</numerusform>
            </translation>
        </message>
        <message>
            <source>Add Files</source>
            <translation>ファイルを追加</translation>
        </message>
        <message>
            <source>Add Folder</source>
            <translation>フォルダを追加</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s)</source>
            <translation>
                <numerusform>%n 項目</numerusform>
            </translation>
        </message>
        <message>
            <source>There are no files to paste. Copy some in the file manager first.</source>
            <translation>貼り付けるファイルがありません。先にファイルマネージャでコピーしてください。</translation>
        </message>
        <message>
            <source>Fi&amp;nd</source>
            <translation>検索(&amp;N)</translation>
        </message>
        <message>
            <source>&amp;Check Names and Size</source>
            <translation>名前とサイズを確認(&amp;C)</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) cannot be stored as they are…</source>
            <translation>
                <numerusform>そのまま保存できない項目 %n…</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n name(s) or detail(s) change…</source>
            <translation>
                <numerusform>変わる名前や属性 %n…</numerusform>
            </translation>
        </message>
        <message>
            <source>This is how filesystems of the disc differ from what is shown. Every system reads one that it knows.</source>
            <translation>ディスクのファイルシステムと表示との違いです。各システムは対応するものを読みます。</translation>
        </message>
        <message>
            <source>Everything</source>
            <translation>すべて</translation>
        </message>
        <message>
            <source>Names that change</source>
            <translation>変わる名前</translation>
        </message>
        <message>
            <source>Missing or not storable</source>
            <translation>見つからない・保存できないもの</translation>
        </message>
        <message>
            <source>On the disc more than once</source>
            <translation>ディスクに重複するもの</translation>
        </message>
        <message>
            <source>What is shown</source>
            <translation>表示する項目</translation>
        </message>
        <message>
            <source>&amp;Split over Several Discs…</source>
            <translation>複数のディスクに分割(&amp;S)…</translation>
        </message>
        <message>
            <source>These files of an image are there for a while only. Take them out into a folder, and add them from there.</source>
            <translation>イメージのこれらのファイルは一時的なものです。フォルダーに取り出してから、そこから追加してください。</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DesktopNotifier</name>
        <message>
            <source>It did not succeed</source>
            <translation>成功しませんでした</translation>
        </message>
        <message>
            <source>Finished</source>
            <translation>完了</translation>
        </message>
        <message>
            <source>Finished, but not everything is as it should be</source>
            <translation>完了しましたが、問題があります</translation>
        </message>
        <message>
            <source>Show</source>
            <translation>表示</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DiscDocument</name>
        <message>
            <source>Rename the Disc</source>
            <translation>ディスク名を変更</translation>
        </message>
        <message>
            <source>%1 is on the disc already.</source>
            <translation>%1 はすでにディスクにあります。</translation>
        </message>
        <message>
            <source>%1 is called %2 on the disc: its name was taken.</source>
            <translation>同じ名前があるため、%1 はディスクでは %2 になります。</translation>
        </message>
        <message numerus="yes">
            <source>Add %n Item(s)</source>
            <translation>
                <numerusform>%n 項目を追加</numerusform>
            </translation>
        </message>
        <message>
            <source>New Folder</source>
            <translation>新規フォルダ</translation>
        </message>
        <message numerus="yes">
            <source>Remove %n Item(s)</source>
            <translation>
                <numerusform>%n 項目を外す</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 cannot be moved into itself.</source>
            <translation>%1 をそれ自身の中へ移動することはできません。</translation>
        </message>
        <message numerus="yes">
            <source>Move %n Item(s)</source>
            <translation>
                <numerusform>%n 項目を移動</numerusform>
            </translation>
        </message>
        <message>
            <source>A name cannot be empty.</source>
            <translation>名前を空にすることはできません。</translation>
        </message>
        <message>
            <source>A name cannot be %1: no system could open it.</source>
            <translation>%1 という名前は使えません。どのシステムでも開けません。</translation>
        </message>
        <message>
            <source>A name can have 255 bytes at most.</source>
            <translation>名前は 255 バイトまでです。</translation>
        </message>
        <message>
            <source>There is a %1 in this folder already.</source>
            <translation>このフォルダにはすでに %1 があります。</translation>
        </message>
        <message>
            <source>Rename %1</source>
            <translation>%1 の名前を変更</translation>
        </message>
        <message>
            <source>Change Options</source>
            <translation>オプションを変更</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DiscPreview</name>
        <message>
            <source>%1 calls it %2</source>
            <translation>%1 での名前: %2</translation>
        </message>
        <message>
            <source>Not in %1: %2</source>
            <translation>%1 にはありません: %2</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DiscTreeModel</name>
        <message>
            <source>Name</source>
            <translation>名前</translation>
        </message>
        <message>
            <source>Size</source>
            <translation>サイズ</translation>
        </message>
        <message>
            <source>Kind</source>
            <translation>種類</translation>
        </message>
        <message>
            <source>Modified</source>
            <translation>更新日時</translation>
        </message>
        <message>
            <source>Folder on the disc</source>
            <translation>ディスク上のフォルダ</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::FileLending</name>
        <message>
            <source>the files cannot be taken out into %1: %2</source>
            <translation>ファイルを %1 に取り出せません: %2</translation>
        </message>
        <message>
            <source>There is nothing to paste or drop.</source>
            <translation>貼り付けたりドロップしたりできるものがありません。</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ImageContentsModel</name>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n 個のファイル</numerusform>
            </translation>
        </message>
        <message>
            <source>Track %1</source>
            <translation>トラック %1</translation>
        </message>
        <message>
            <source>%1, sound</source>
            <translation>%1、音声</translation>
        </message>
        <message>
            <source>%1, data</source>
            <translation>%1、データ</translation>
        </message>
        <message>
            <source>Name</source>
            <translation>名前</translation>
        </message>
        <message>
            <source>Size</source>
            <translation>サイズ</translation>
        </message>
        <message>
            <source>Modified</source>
            <translation>更新日時</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ImageView</name>
        <message>
            <source>&amp;Open Image…</source>
            <translation>イメージを開く(&amp;O)…</translation>
        </message>
        <message>
            <source>&amp;Compare with a Folder…</source>
            <translation>フォルダーと比較(&amp;C)…</translation>
        </message>
        <message>
            <source>&amp;Take Out Tracks…</source>
            <translation>トラックを取り出す(&amp;T)…</translation>
        </message>
        <message>
            <source>The image</source>
            <translation>イメージ</translation>
        </message>
        <message>
            <source>What the image holds</source>
            <translation>イメージの内容</translation>
        </message>
        <message>
            <source>Drop a disc image here</source>
            <translation>ディスクイメージをここにドロップ</translation>
        </message>
        <message>
            <source>Open Image…</source>
            <translation>イメージを開く…</translation>
        </message>
        <message>
            <source>Take Out &amp;Files…</source>
            <translation>ファイルを取り出す(&amp;F)…</translation>
        </message>
        <message>
            <source>Copy what is chosen, or everything, into a folder</source>
            <translation>選択したもの、またはすべてをフォルダーにコピー</translation>
        </message>
        <message>
            <source>An ISO, BIN or VANT image, or a cue sheet. See what is in it, take files out, compare it with a folder, and write it to a disc.</source>
            <translation>ISO、BIN、VANT イメージ、またはキューシート。中身を見て、ファイルを取り出し、フォルダーと比較し、ディスクに書き込めます。</translation>
        </message>
        <message>
            <source>Cop&amp;y Files</source>
            <translation>ファイルをコピー(&amp;Y)</translation>
        </message>
        <message>
            <source>Take what is chosen out, so that the file manager can paste it</source>
            <translation>選択したものを取り出し、ファイルマネージャーで貼り付けられるようにします</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::JobBar</name>
        <message>
            <source>Cancel</source>
            <translation>キャンセル</translation>
        </message>
        <message>
            <source>Progress</source>
            <translation>進行状況</translation>
        </message>
        <message>
            <source>%1 — %2 · %3 so far</source>
            <translation>%1 — %2 · 経過 %3</translation>
        </message>
        <message>
            <source>%1 — %2</source>
            <translation>%1 — %2</translation>
        </message>
        <message>
            <source>Cancelling…</source>
            <translation>キャンセル中…</translation>
        </message>
        <message>
            <source>%1 so far</source>
            <translation>経過 %1</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::JobRunner</name>
        <message>
            <source>A disc is being written. Stop?</source>
            <translation>ディスクに書き込んでいます。停止しますか?</translation>
        </message>
        <message>
            <source>&amp;Stop</source>
            <translation>停止(&amp;S)</translation>
        </message>
        <message>
            <source>Tessaron</source>
            <translation>Tessaron</translation>
        </message>
        <message>
            <source>&amp;Go On</source>
            <translation>続ける(&amp;G)</translation>
        </message>
        <message>
            <source>An image is being made or read. Stop, and quit?</source>
            <translation>イメージを作成または読み込み中です。停止して終了しますか?</translation>
        </message>
        <message>
            <source>A disc is being written. Stop, and quit?</source>
            <translation>ディスクに書き込んでいます。停止して終了しますか?</translation>
        </message>
        <message>
            <source>&amp;Stop and Quit</source>
            <translation>中止して終了(&amp;S)</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ListDialog</name>
        <message>
            <source>Details</source>
            <translation>詳細</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::MainWindow</name>
        <message>
            <source>ISO image (.iso)</source>
            <translation>ISO イメージ (.iso)</translation>
        </message>
        <message>
            <source>BIN image with cue sheet (.bin)</source>
            <translation>CUE シート付き BIN イメージ (.bin)</translation>
        </message>
        <message>
            <source>VANT image (.vant)</source>
            <translation>VANT イメージ (.vant)</translation>
        </message>
        <message>
            <source>Kinds of disc</source>
            <translation>ディスクの種類</translation>
        </message>
        <message>
            <source>&amp;File</source>
            <translation>ファイル(&amp;F)</translation>
        </message>
        <message>
            <source>Save &amp;Image…</source>
            <translation>イメージを保存(&amp;I)…</translation>
        </message>
        <message>
            <source>Make a disc image of what is shown</source>
            <translation>表示中の内容からディスクイメージを作成</translation>
        </message>
        <message>
            <source>&amp;Verify Images That Were Saved</source>
            <translation>保存したイメージを検証(&amp;V)</translation>
        </message>
        <message>
            <source>&amp;Quit</source>
            <translation>終了(&amp;Q)</translation>
        </message>
        <message>
            <source>&amp;Edit</source>
            <translation>編集(&amp;E)</translation>
        </message>
        <message>
            <source>&amp;Disc</source>
            <translation>ディスク(&amp;D)</translation>
        </message>
        <message>
            <source>Tools</source>
            <translation>ツール</translation>
        </message>
        <message>
            <source>Save Image</source>
            <translation>イメージを保存</translation>
        </message>
        <message>
            <source>&amp;Burn…</source>
            <translation>書き込む(&amp;B)…</translation>
        </message>
        <message>
            <source>Write what is shown to a disc</source>
            <translation>表示中の内容をディスクに書き込む</translation>
        </message>
        <message>
            <source>S&amp;top</source>
            <translation>停止(&amp;T)</translation>
        </message>
        <message>
            <source>Something else is being done. Wait for its end, or stop it.</source>
            <translation>別の処理の実行中です。終わるのを待つか、停止してください。</translation>
        </message>
        <message>
            <source>The files were not opened, since a dialog was open. Open them again.</source>
            <translation>ダイアログが開いていたため、ファイルは開かれませんでした。もう一度開いてください。</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::NoticeBar</name>
        <message>
            <source>&amp;Details…</source>
            <translation>詳細(&amp;D)…</translation>
        </message>
        <message>
            <source>Close this message</source>
            <translation>このメッセージを閉じる</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::OptionsDialog</name>
        <message>
            <source>&amp;Hidden on the disc</source>
            <translation>ディスクでは隠す(&amp;H)</translation>
        </message>
        <message>
            <source>&amp;Everywhere</source>
            <translation>すべて(&amp;E)</translation>
        </message>
        <message>
            <source>Only for &amp;Macs (UDF and HFS+)</source>
            <translation>Mac のみ (UDF と HFS+)(&amp;M)</translation>
        </message>
        <message>
            <source>Only for &amp;PCs (ISO 9660 and Joliet)</source>
            <translation>PC のみ (ISO 9660 と Joliet)(&amp;P)</translation>
        </message>
        <message>
            <source>Only in &amp;these filesystems:</source>
            <translation>次のファイルシステムのみ(&amp;T):</translation>
        </message>
        <message>
            <source>Options</source>
            <translation>オプション</translation>
        </message>
        <message>
            <source>Is found</source>
            <translation>入れる場所</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::PlayerProcess</name>
        <message>
            <source>The player is open already.</source>
            <translation>プレーヤーはすでに開いています。</translation>
        </message>
        <message>
            <source>The player is not installed.</source>
            <translation>プレーヤーがインストールされていません。</translation>
        </message>
        <message>
            <source>The player cannot be started: %1</source>
            <translation>プレーヤーを起動できません: %1</translation>
        </message>
        <message>
            <source>The player ended unexpectedly.</source>
            <translation>プレーヤーが予期せず終了しました。</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ProjectActions</name>
        <message>
            <source>&amp;New Disc</source>
            <translation>新規ディスク(&amp;N)</translation>
        </message>
        <message>
            <source>&amp;Open…</source>
            <translation>開く(&amp;O)…</translation>
        </message>
        <message>
            <source>Open &amp;Recent</source>
            <translation>最近使った項目(&amp;R)</translation>
        </message>
        <message>
            <source>&amp;Save Project</source>
            <translation>プロジェクトを保存(&amp;S)</translation>
        </message>
        <message>
            <source>Save Project &amp;As…</source>
            <translation>名前を付けて保存(&amp;A)…</translation>
        </message>
        <message>
            <source>This is the disc that was open when the program ended unexpectedly. It is not saved.</source>
            <translation>プログラムが予期せず終了したときに開いていたディスクです。保存されていません。</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) of this project are missing: they were moved or removed.</source>
            <translation>
                <numerusform>このプロジェクトの %n ファイルが見つかりません。移動または削除されました。</numerusform>
            </translation>
        </message>
        <message>
            <source>New disc</source>
            <translation>新規ディスク</translation>
        </message>
        <message>
            <source>%1[*] — Tessaron</source>
            <translation>%1[*] — Tessaron</translation>
        </message>
        <message>
            <source>Open Project</source>
            <translation>プロジェクトを開く</translation>
        </message>
        <message>
            <source>Projects (*.tessaron)</source>
            <translation>プロジェクト (*.tessaron)</translation>
        </message>
        <message>
            <source>All files (*)</source>
            <translation>すべてのファイル (*)</translation>
        </message>
        <message>
            <source>Save Project</source>
            <translation>プロジェクトを保存</translation>
        </message>
        <message>
            <source>The project was not saved: %1</source>
            <translation>プロジェクトを保存できませんでした: %1</translation>
        </message>
        <message>
            <source>Tessaron</source>
            <translation>Tessaron</translation>
        </message>
        <message>
            <source>This disc is not saved as a project. Save it first?</source>
            <translation>このディスクはプロジェクトとして保存されていません。先に保存しますか?</translation>
        </message>
        <message>
            <source>Without saving, what you put together is lost. The files themselves stay.</source>
            <translation>保存しないと、まとめた内容は失われます。ファイル自体は残ります。</translation>
        </message>
        <message>
            <source>No projects yet</source>
            <translation>プロジェクトはまだありません</translation>
        </message>
        <message>
            <source>this program has no panel for discs of its kind</source>
            <translation>このプログラムにはこの種類のディスク用のパネルがありません</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ProjectKeeper</name>
        <message>
            <source>Try again in a moment.</source>
            <translation>少し待ってからもう一度お試しください。</translation>
        </message>
        <message>
            <source>another project is being saved</source>
            <translation>別のプロジェクトを保存中です</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareBurning</name>
        <message>
            <source>Disc %1 of %2: %3</source>
            <translation>ディスク %1/%2: %3</translation>
        </message>
        <message numerus="yes">
            <source>%1 of %n disc(s) were written.</source>
            <translation>
                <numerusform>%n 枚中 %1 枚のディスクに書き込みました。</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 is not written.</source>
            <translation>%1 は書き込まれていません。</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareProjects</name>
        <message numerus="yes">
            <source>%n project(s) were saved.</source>
            <translation>
                <numerusform>%n 個のプロジェクトを保存しました。</numerusform>
            </translation>
        </message>
        <message>
            <source>Open one after the other to burn it.</source>
            <translation>順に開いて書き込んでください。</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareSaving</name>
        <message numerus="yes">
            <source>%n image(s) were saved.</source>
            <translation>
                <numerusform>%n 個のイメージを保存しました。</numerusform>
            </translation>
        </message>
        <message>
            <source>They were not compared with the files.</source>
            <translation>ファイルとの比較は行っていません。</translation>
        </message>
        <message numerus="yes">
            <source>%1 of %n image(s) were saved.</source>
            <translation>
                <numerusform>%n 個のうち %1 個のイメージを保存しました。</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::SoundBar</name>
        <message>
            <source>Place in the track</source>
            <translation>トラック内の位置</translation>
        </message>
        <message>
            <source>Click where you want to listen</source>
            <translation>聴きたい位置をクリックします</translation>
        </message>
        <message>
            <source>Time</source>
            <translation>時間</translation>
        </message>
        <message>
            <source>%1 of %2</source>
            <translation>%1 / %2</translation>
        </message>
        <message>
            <source>&amp;Pause</source>
            <translation>一時停止(&amp;P)</translation>
        </message>
        <message>
            <source>&amp;Listen</source>
            <translation>試聴(&amp;L)</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::SourceIntake</name>
        <message>
            <source>The folder %1 cannot be listed: %2</source>
            <translation>フォルダ %1 の内容を読めません: %2</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::SplitDialog</name>
        <message>
            <source>Split over Several Discs</source>
            <translation>複数のディスクに分割</translation>
        </message>
        <message>
            <source>&amp;Kind of disc:</source>
            <translation>ディスクの種類(&amp;K):</translation>
        </message>
        <message>
            <source>Disc</source>
            <translation>ディスク</translation>
        </message>
        <message>
            <source>Size</source>
            <translation>サイズ</translation>
        </message>
        <message>
            <source>The discs and what is on them</source>
            <translation>ディスクとその内容</translation>
        </message>
        <message>
            <source>&amp;Save Images…</source>
            <translation>イメージを保存(&amp;S)…</translation>
        </message>
        <message>
            <source>Finding out what goes onto which disc…</source>
            <translation>どのディスクに何を入れるか調べています…</translation>
        </message>
        <message>
            <source>Splitting</source>
            <translation>分割</translation>
        </message>
        <message numerus="yes">
            <source>%n disc(s) of %1 are needed.</source>
            <translation>
                <numerusform>%1 のディスクが %n 枚必要です。</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are larger than such a disc, and on none.</source>
            <translation>
                <numerusform>%n 個のファイルはディスクより大きいため、どのディスクにも入りません。</numerusform>
            </translation>
        </message>
        <message>
            <source>%1: %2</source>
            <translation>%1: %2</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n ファイル</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… ほか %n 件</numerusform>
            </translation>
        </message>
        <message>
            <source>Too large for such a disc</source>
            <translation>ディスクに入らない大きさ</translation>
        </message>
        <message>
            <source>&amp;Burn…</source>
            <translation>書き込む(&amp;B)…</translation>
        </message>
        <message>
            <source>Save &amp;Projects…</source>
            <translation>プロジェクトを保存(&amp;P)…</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::VideoView</name>
        <message>
            <source>any language</source>
            <translation>言語の指定なし</translation>
        </message>
        <message>
            <source>for the visually impaired</source>
            <translation>視覚障害者向け</translation>
        </message>
        <message>
            <source>comments</source>
            <translation>コメンタリー</translation>
        </message>
        <message>
            <source>large letters</source>
            <translation>大きな文字</translation>
        </message>
        <message>
            <source>for children</source>
            <translation>子供向け</translation>
        </message>
        <message>
            <source>for the hard of hearing</source>
            <translation>聴覚障害者向け</translation>
        </message>
        <message>
            <source>always shown</source>
            <translation>常に表示</translation>
        </message>
        <message>
            <source>of an unknown form</source>
            <translation>不明な形式</translation>
        </message>
        <message>
            <source>Title menu</source>
            <translation>タイトルメニュー</translation>
        </message>
        <message>
            <source>Main menu</source>
            <translation>メインメニュー</translation>
        </message>
        <message>
            <source>Subtitle menu</source>
            <translation>字幕メニュー</translation>
        </message>
        <message>
            <source>Sound menu</source>
            <translation>音声メニュー</translation>
        </message>
        <message>
            <source>Angle menu</source>
            <translation>アングルメニュー</translation>
        </message>
        <message>
            <source>Chapter menu</source>
            <translation>チャプターメニュー</translation>
        </message>
        <message numerus="yes">
            <source>%n angle(s)</source>
            <translation>
                <numerusform>%n アングル</numerusform>
            </translation>
        </message>
        <message>
            <source>Title %1</source>
            <translation>タイトル %1</translation>
        </message>
        <message>
            <source>Chapter %1</source>
            <translation>チャプター %1</translation>
        </message>
        <message>
            <source>at %1</source>
            <translation>%1 から</translation>
        </message>
        <message>
            <source>Sound %1</source>
            <translation>音声 %1</translation>
        </message>
        <message numerus="yes">
            <source>%n channel(s)</source>
            <translation>
                <numerusform>%n チャンネル</numerusform>
            </translation>
        </message>
        <message>
            <source>Subtitles %1</source>
            <translation>字幕 %1</translation>
        </message>
        <message>
            <source>Sho&amp;w…</source>
            <translation>表示(&amp;W)…</translation>
        </message>
        <message>
            <source>&amp;Open Video DVD…</source>
            <translation>DVD ビデオを開く(&amp;O)…</translation>
        </message>
        <message>
            <source>Choose a folder VIDEO_TS, or the one that holds it</source>
            <translation>VIDEO_TS フォルダー、またはそれを含むフォルダーを選択</translation>
        </message>
        <message>
            <source>Open &amp;Image…</source>
            <translation>イメージを開く(&amp;I)…</translation>
        </message>
        <message>
            <source>Choose an image of a video DVD</source>
            <translation>DVD ビデオのイメージを選択</translation>
        </message>
        <message>
            <source>&amp;Play</source>
            <translation>再生(&amp;P)</translation>
        </message>
        <message>
            <source>Play the disc, or the title or chapter that is chosen</source>
            <translation>ディスク、または選択したタイトルやチャプターを再生</translation>
        </message>
        <message>
            <source>Drop a video DVD here</source>
            <translation>DVD ビデオをここにドロップ</translation>
        </message>
        <message>
            <source>A folder VIDEO_TS, or an image. See its titles, check and play it, save it as an image for players, and write it to a disc.</source>
            <translation>VIDEO_TS フォルダー、またはイメージ。タイトルを見て、確認・再生し、プレーヤー用のイメージとして保存し、ディスクに書き込めます。</translation>
        </message>
        <message>
            <source>Open Video DVD…</source>
            <translation>DVD ビデオを開く…</translation>
        </message>
        <message>
            <source>The video DVD</source>
            <translation>DVD ビデオ</translation>
        </message>
        <message>
            <source>Show what is not as players need it</source>
            <translation>プレーヤーに合わない点を表示</translation>
        </message>
        <message>
            <source>Content</source>
            <translation>内容</translation>
        </message>
        <message>
            <source>Length</source>
            <translation>長さ</translation>
        </message>
        <message>
            <source>Details</source>
            <translation>詳細</translation>
        </message>
        <message>
            <source>What the video DVD holds</source>
            <translation>DVD ビデオの内容</translation>
        </message>
        <message>
            <source>of the disc</source>
            <translation>ディスク全体</translation>
        </message>
        <message>
            <source>of title set %1</source>
            <translation>タイトルセット %1</translation>
        </message>
        <message numerus="yes">
            <source>%n thing(s) are not as players need them.</source>
            <translation>
                <numerusform>プレーヤーに合わない点が %n 件あります。</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>TextLanguages</name>
        <message>
            <source>Language %1</source>
            <translation>言語 %1</translation>
        </message>
    </context>
    <context>
        <name>VideoPanel</name>
        <message>
            <source>Title %1: %2</source>
            <translation>タイトル %1: %2</translation>
        </message>
        <message>
            <source>The disc is copy-protected: its contents are scrambled and cannot be played.</source>
            <translation>ディスクはコピー防止されています。内容は暗号化されており、再生できません。</translation>
        </message>
        <message>
            <source>Video DVD</source>
            <translation>DVD ビデオ</translation>
        </message>
        <message>
            <source>Folders VIDEO_TS for DVD players</source>
            <translation>DVD プレーヤー用の VIDEO_TS フォルダー</translation>
        </message>
        <message>
            <source>No video DVD is open. Open one first.</source>
            <translation>DVD ビデオが開かれていません。まず開いてください。</translation>
        </message>
        <message>
            <source>Looking at %1</source>
            <translation>%1 を調べています</translation>
        </message>
        <message>
            <source>%1: %2, the longest of %3</source>
            <translation>%1: %2、最長 %3</translation>
        </message>
        <message numerus="yes">
            <source>%n title(s)</source>
            <translation>
                <numerusform>%n タイトル</numerusform>
            </translation>
        </message>
        <message>
            <source>Open Video DVD</source>
            <translation>DVD ビデオを開く</translation>
        </message>
        <message>
            <source>Open Image of a Video DVD</source>
            <translation>DVD ビデオのイメージを開く</translation>
        </message>
        <message>
            <source>Disc images (*.iso *.bin *.img *.vant *.udf)</source>
            <translation>ディスクイメージ (*.iso *.bin *.img *.vant *.udf)</translation>
        </message>
        <message>
            <source>All files (*)</source>
            <translation>すべてのファイル (*)</translation>
        </message>
        <message>
            <source>Names, lengths and backups of the files, and where they will lie on the disc, are as players need them. Pictures and sound are not checked.</source>
            <translation>ファイルの名前、長さ、予備、ディスク上の位置はプレーヤーの要件を満たしています。映像と音声は確認していません。</translation>
        </message>
        <message>
            <source>Its tables are as players need them. Where its files lie, and pictures and sound, are not checked.</source>
            <translation>管理情報はプレーヤーの要件を満たしています。ファイルの位置、映像、音声は確認していません。</translation>
        </message>
        <message>
            <source>It was not found out where the files will lie on the disc: %1</source>
            <translation>ファイルがディスクのどこに置かれるかを調べられませんでした: %1</translation>
        </message>
    </context>
    <context>
        <name>Words</name>
        <message numerus="yes">
            <source>%n bytes</source>
            <translation>
                <numerusform>%n バイト</numerusform>
            </translation>
        </message>
        <message>
            <source>Preparing</source>
            <translation>準備中</translation>
        </message>
        <message>
            <source>Reading folders</source>
            <translation>フォルダを読み込み中</translation>
        </message>
        <message>
            <source>Laying out the disc</source>
            <translation>ディスクを構成中</translation>
        </message>
        <message>
            <source>Measuring the loudness</source>
            <translation>音量を測定中</translation>
        </message>
        <message>
            <source>Writing</source>
            <translation>書き込み中</translation>
        </message>
        <message>
            <source>Comparing</source>
            <translation>比較中</translation>
        </message>
        <message>
            <source>Waiting for the disk</source>
            <translation>ディスクへの書き込み待ち</translation>
        </message>
        <message>
            <source>Done</source>
            <translation>完了</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n ファイル</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 of %2</source>
            <translation>%1 / %2</translation>
        </message>
        <message>
            <source>%1/s</source>
            <translation>%1/秒</translation>
        </message>
        <message>
            <source>%1 left</source>
            <translation>残り %1</translation>
        </message>
        <message>
            <source>Hidden on the disc.</source>
            <translation>ディスクでは隠されます。</translation>
        </message>
        <message>
            <source>Only for Macs: UDF and HFS+.</source>
            <translation>Mac のみ: UDF と HFS+。</translation>
        </message>
        <message>
            <source>Only for PCs: ISO 9660 and Joliet.</source>
            <translation>PC のみ: ISO 9660 と Joliet。</translation>
        </message>
        <message>
            <source>Only in %1.</source>
            <translation>%1 のみ。</translation>
        </message>
        <message>
            <source>Ending the disc, which can take minutes</source>
            <translation>ディスクを閉じています (数分かかることがあります)</translation>
        </message>
        <message>
            <source>untitled disc</source>
            <translation>名称未設定のディスク</translation>
        </message>
        <message>
            <source>untitled folder</source>
            <translation>名称未設定のフォルダー</translation>
        </message>
        <message>
            <source>disc</source>
            <translation>ディスク</translation>
        </message>
    </context>
</TS>
