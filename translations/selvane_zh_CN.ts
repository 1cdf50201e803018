<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../app/MainWindow.cpp" line="70"/>
        <source>Channel %1: %2</source>
        <translation>通道 %1：%2</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="140"/>
        <source>Output Settings</source>
        <translation>输出设置</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="142"/>
        <source>Output Preview</source>
        <translation>输出预览</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="144"/>
        <source>Audio Mixer</source>
        <translation>混音器</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="146"/>
        <source>Text Overlay</source>
        <translation>文字叠加</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="148"/>
        <source>Video Overlay</source>
        <translation>视频叠加</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="150"/>
        <source>Image Playback</source>
        <translation>图片播放</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="201"/>
        <source>&amp;File</source>
        <translation>文件(&amp;F)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="202"/>
        <source>Export Drawing...</source>
        <translation>导出涂鸦...</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="203"/>
        <source>Open Output Folder</source>
        <translation>打开输出文件夹</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="204"/>
        <source>E&amp;xit</source>
        <translation>退出(&amp;X)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="205"/>
        <source>&amp;View</source>
        <translation>视图(&amp;V)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="206"/>
        <source>Drawing Tools</source>
        <translation>绘图工具</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="207"/>
        <source>Reset Workspace Layout</source>
        <translation>重置工作区布局</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="208"/>
        <source>&amp;Tools</source>
        <translation>工具(&amp;T)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="209"/>
        <source>Program Scheduling...</source>
        <translation>节目编排...</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="210"/>
        <source>Network Proxy...</source>
        <translation>网络代理...</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="211"/>
        <source>&amp;Help</source>
        <translation>帮助(&amp;H)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="212"/>
        <source>Language</source>
        <translation>语言</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="215"/>
        <location filename="../app/MainWindow.cpp" line="231"/>
        <source>About Selvane</source>
        <translation>关于 Selvane</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="226"/>
        <source>Output Folder</source>
        <translation>输出文件夹</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="226"/>
        <source>Unable to open the output folder.</source>
        <translation>无法打开输出文件夹。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="232"/>
        <source>Selvane %1
Live video mixer: four input channels, overlays, audio mixing, recording and live streaming.</source>
        <translation>Selvane %1
直播视频混合器：四路输入、叠加、混音、录制与直播推流。</translation>
    </message>
</context>
<context>
    <name>ProgramArrangement</name>
    <message>
        <location filename="../cli/CommandLine.cpp" line="84"/>
        <source>Unable to open the file.</source>
        <translation>无法打开文件。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="102"/>
        <source>Schedule check passed: %1 base clip(s), %2 overlay clip(s).</source>
        <translation>节目编排检查通过：%1 个基础片段，%2 个叠加片段。</translation>
    </message>
    <message>
        <location filename="../schedule/ScheduleRunner.cpp" line="69"/>
        <source>Add at least one valid base clip.</source>
        <translation>请至少添加一个有效的基础片段。</translation>
    </message>
</context>
<context>
    <name>arrangement</name>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="72"/>
        <source>Base clip %1: channel %2 does not exist; channel %3 plays instead.</source>
        <translation>基础片段 %1：通道 %2 不存在，改为播放通道 %3。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="183"/>
        <source>the document is not an object</source>
        <translation>文档不是一个对象</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="208"/>
        <source>Invalid Schedule</source>
        <translation>无效的节目编排</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="211"/>
        <source>Missing Media</source>
        <translation>媒体缺失</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="216"/>
        <source>Every base clip needs an ID.</source>
        <translation>每个基础片段都需要 ID。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="218"/>
        <source>Duplicate base clip ID: %1</source>
        <translation>基础片段 ID 重复：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="221"/>
        <location filename="../schedule/ProgramArrangement.cpp" line="240"/>
        <source>End time must be later than start time.</source>
        <translation>结束时间必须晚于开始时间。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="223"/>
        <source>Select an image directory.</source>
        <translation>请选择图片目录。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="225"/>
        <source>Select a video for the channel.</source>
        <translation>请为通道选择视频。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="227"/>
        <source>Base video was not found: %1</source>
        <translation>找不到基础视频：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="230"/>
        <source>Image directory was not found: %1</source>
        <translation>找不到图片目录：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="235"/>
        <source>Every overlay clip needs an ID.</source>
        <translation>每个叠加片段都需要 ID。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="237"/>
        <source>Duplicate overlay clip ID: %1</source>
        <translation>叠加片段 ID 重复：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="242"/>
        <source>Overlay text cannot be empty.</source>
        <translation>叠加文字不能为空。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="244"/>
        <source>Select an overlay image file.</source>
        <translation>请选择叠加图片文件。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="246"/>
        <source>Overlay image was not found: %1</source>
        <translation>找不到叠加图片：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="248"/>
        <source>Select an overlay video.</source>
        <translation>请选择叠加视频。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="250"/>
        <source>Overlay video was not found: %1</source>
        <translation>找不到叠加视频：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="253"/>
        <source>Add at least one valid base clip.</source>
        <translation>请至少添加一个有效的基础片段。</translation>
    </message>
</context>
<context>
    <name>selvane</name>
    <message>
        <location filename="../cli/CommandLine.cpp" line="22"/>
        <source>Selvane live video mixer. Without options the mixer window opens.</source>
        <translation>Selvane 直播视频混合器。不带选项时打开混合器窗口。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="25"/>
        <source>Run the engine without a window (no instance lock).</source>
        <translation>无窗口运行引擎（不占用单实例锁）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="26"/>
        <source>Play this program schedule (JSON) into the outputs.</source>
        <translation>将此节目编排（JSON）播出到输出。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="29"/>
        <source>Validate a program schedule and print it in the current format.</source>
        <translation>校验节目编排并以当前格式输出。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="31"/>
        <source>Run the built-in demo: test signals, a schedule, a ticker and an image overlay (no files needed).</source>
        <translation>运行内置演示：测试信号、节目编排、滚动字幕和图片叠加（无需任何文件）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="34"/>
        <source>Load a source into input channel N (1-4): a file path, a network URL, a capture address or lavfi://GRAPH. Repeatable.</source>
        <translation>为输入通道 N（1-4）加载信号源：文件路径、网络地址、采集地址或 lavfi://GRAPH。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="37"/>
        <source>Channel (1-4) that forms the program picture. Default 1.</source>
        <translation>构成节目画面的通道（1-4），默认 1。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="38"/>
        <source>Stop after this many seconds (default: until Ctrl+C).</source>
        <translation>运行指定秒数后停止（默认：直到 Ctrl+C）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="41"/>
        <source>Preview (speaker) volume of channel N, linear, e.g. 1=0.5. Repeatable.</source>
        <translation>通道 N 的预览（扬声器）音量，线性，例如 1=0.5。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="44"/>
        <source>Volume of the program channel in the program mix, linear (default 1).</source>
        <translation>节目通道在节目混音中的音量，线性（默认 1）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="46"/>
        <source>Program bus gain for recording and streaming, in percent (default 100).</source>
        <translation>录制与推流的节目总线增益，百分比（默认 100）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="49"/>
        <source>Show a scrolling ticker with these words. Repeatable.</source>
        <translation>显示滚动字幕。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="51"/>
        <source>Show a picture in the rectangle x,y,w,h of the 640x360 scene. Repeatable.</source>
        <translation>在 640x360 场景的矩形 x,y,w,h 中显示图片。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="54"/>
        <source>Play a video (looping) in the rectangle x,y,w,h of the 640x360 scene. Repeatable.</source>
        <translation>在 640x360 场景的矩形 x,y,w,h 中循环播放视频。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="57"/>
        <source>Record the program to this file (MP4, MKV, MOV, TS ...).</source>
        <translation>将节目录制到此文件（MP4、MKV、MOV、TS……）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="60"/>
        <source>Start a new recording file at a keyframe after this many minutes.</source>
        <translation>录制满指定分钟后在关键帧处开始新文件。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="62"/>
        <source>Start a new recording file at a keyframe once a file reaches this many GiB.</source>
        <translation>文件达到指定 GiB 后在关键帧处开始新文件。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="65"/>
        <source>Publish the program to this URL (rtmp://, rtmps://, srt://, udp:// ...); #FORMAT picks the container (flv, mpegts). Repeatable.</source>
        <translation>将节目推流到此地址（rtmp://、rtmps://、srt://、udp://……）；#FORMAT 指定封装格式（flv、mpegts）。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="68"/>
        <source>Output size, e.g. 1280x720 (default: same as the program).</source>
        <translation>输出尺寸，例如 1280x720（默认：与节目相同）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="70"/>
        <source>Output frame rate: 30 or 60 (default 30).</source>
        <translation>输出帧率：30 或 60（默认 30）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="71"/>
        <source>Video bitrate in kbit/s (default: automatic).</source>
        <translation>视频码率，kbit/s（默认：自动）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="72"/>
        <source>Video encoder: auto, hardware or software (default auto).</source>
        <translation>视频编码器：auto、hardware 或 software（默认 auto）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="75"/>
        <source>Quality preset: performance, balanced or quality (default balanced).</source>
        <translation>质量预设：performance、balanced 或 quality（默认 balanced）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="161"/>
        <source>--record expects a file path</source>
        <translation>--record 需要文件路径</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="171"/>
        <source>--%1 expects a positive number, got &quot;%2&quot;</source>
        <translation>--%1 需要正数，收到 &quot;%2&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="181"/>
        <source>segment limits need --record</source>
        <translation>分段限制需要 --record</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="190"/>
        <source>--stream expects a URL such as rtmp://host/app/key, got &quot;%1&quot;</source>
        <translation>--stream 需要类似 rtmp://host/app/key 的地址，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="210"/>
        <source>--size expects an even width and height, got &quot;%1&quot;</source>
        <translation>--size 的宽和高必须是偶数，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="320"/>
        <source>overlay &quot;%1&quot;: &quot;%2&quot; is not a file that can be read</source>
        <translation>叠加 &quot;%1&quot;：&quot;%2&quot; 不是可读取的文件</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="190"/>
        <source>--record: &quot;%1&quot; names no known container (use .mp4, .mkv, .mov, .ts ...)</source>
        <translation>--record: &quot;%1&quot; 不是已知的容器格式（请用 .mp4、.mkv、.mov、.ts 等）</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="190"/>
        <source>--record: the folder of &quot;%1&quot; does not exist</source>
        <translation>--record: &quot;%1&quot; 所在的文件夹不存在</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="190"/>
        <source>--record: the folder of &quot;%1&quot; cannot be written</source>
        <translation>--record: &quot;%1&quot; 所在的文件夹无法写入</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="190"/>
        <source>--stream: no container for &quot;%1&quot;; add #FORMAT (for example #flv or #mpegts)</source>
        <translation>--stream: 无法确定 &quot;%1&quot; 的容器格式；请加上 #格式（例如 #flv 或 #mpegts）</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="202"/>
        <source>--size expects WIDTHxHEIGHT, got &quot;%1&quot;</source>
        <translation>--size 需要 宽x高，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="210"/>
        <source>--fps expects 30 or 60, got &quot;%1&quot;</source>
        <translation>--fps 需要 30 或 60，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="219"/>
        <source>--bitrate expects kbit/s from 100 to 400000, got &quot;%1&quot;</source>
        <translation>--bitrate 需要 100 到 400000 之间的 kbit/s，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="228"/>
        <source>--encoder expects auto, hardware or software, got &quot;%1&quot;</source>
        <translation>--encoder 需要 auto、hardware 或 software，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="238"/>
        <source>--preset expects performance, balanced or quality, got &quot;%1&quot;</source>
        <translation>--preset 需要 performance、balanced 或 quality，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="256"/>
        <source>--volume expects N=V with N from 1 to 4 and V from 0 to 4, got &quot;%1&quot;</source>
        <translation>--volume 需要 N=V（N 为 1 到 4，V 为 0 到 4），收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="266"/>
        <source>--program-volume expects a number from 0 to 4, got &quot;%1&quot;</source>
        <translation>--program-volume 需要 0 到 4 之间的数，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="275"/>
        <source>--gain expects a percentage from 0 to 1000, got &quot;%1&quot;</source>
        <translation>--gain 需要 0 到 1000 之间的百分比，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="303"/>
        <source>at most %1 image and video overlays</source>
        <translation>图片与视频叠加最多 %1 个</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="325"/>
        <source>--channel expects N=ADDRESS with N from 1 to 4, got &quot;%1&quot;</source>
        <translation>--channel 需要 N=地址（N 为 1 到 4），收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="334"/>
        <source>--base expects a channel from 1 to 4, got &quot;%1&quot;</source>
        <translation>--base 需要 1 到 4 的通道，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="342"/>
        <source>--duration expects a positive number of seconds, got &quot;%1&quot;</source>
        <translation>--duration 需要正的秒数，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="353"/>
        <source>--demo brings its own schedule; leave out --schedule</source>
        <translation>--demo 自带节目编排；请去掉 --schedule</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="359"/>
        <source>--headless needs at least one --channel</source>
        <translation>--headless 至少需要一个 --channel</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="363"/>
        <source>the base channel %1 has no source</source>
        <translation>基础通道 %1 没有信号源</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="55"/>
        <source>the text overlay needs some words, got &quot;%1&quot;</source>
        <translation>文字叠加需要内容，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="62"/>
        <source>the text overlay takes at most %1 characters, got %2</source>
        <translation>文字叠加最多 %1 个字符，实际为 %2</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="67"/>
        <source>overlay &quot;%1&quot;: expected PATH@x,y,w,h (a rectangle in the 640x360 scene)</source>
        <translation>叠加 &quot;%1&quot;：需要 路径@x,y,w,h（640x360 场景中的矩形）</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="73"/>
        <source>overlay &quot;%1&quot;: the path before &apos;@&apos; is empty</source>
        <translation>叠加 &quot;%1&quot;：&apos;@&apos; 前的路径为空</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="78"/>
        <source>overlay &quot;%1&quot;: expected four numbers x,y,w,h after &apos;@&apos;</source>
        <translation>叠加 &quot;%1&quot;：&apos;@&apos; 后需要四个数 x,y,w,h</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="86"/>
        <source>overlay &quot;%1&quot;: &quot;%2&quot; is not a number</source>
        <translation>叠加 &quot;%1&quot;：&quot;%2&quot; 不是数字</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="91"/>
        <source>overlay &quot;%1&quot;: width and height must be positive</source>
        <translation>叠加 &quot;%1&quot;：宽和高必须为正</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="20"/>
        <source>The source could not be opened.</source>
        <translation>无法打开信号源。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="22"/>
        <source>The source&apos;s streams could not be read.</source>
        <translation>无法读取信号源的流信息。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="24"/>
        <source>The source has no picture.</source>
        <translation>信号源没有画面。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="26"/>
        <source>The source&apos;s picture cannot be decoded.</source>
        <translation>无法解码信号源的画面。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="28"/>
        <source>Out of memory while opening the source.</source>
        <translation>打开信号源时内存不足。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="30"/>
        <source>Capture devices are not available: this FFmpeg was built without libavdevice.</source>
        <translation>采集设备不可用：此 FFmpeg 未包含 libavdevice。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="32"/>
        <source>The camera or microphone could not be opened (is the device name the system&apos;s own? Is another program using it?)</source>
        <translation>无法打开摄像头或麦克风（设备名是否与系统一致？是否被其他程序占用？）</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="35"/>
        <source>The separate microphone address is invalid (it needs dshow://…&amp;audio=NAME).</source>
        <translation>分离麦克风地址无效（需 dshow://…&amp;audio=设备名）</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="37"/>
        <source>Capture devices are not available for the separate microphone.</source>
        <translation>分离麦克风的采集设备不可用。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="39"/>
        <source>The separate microphone could not be opened.</source>
        <translation>无法打开分离麦克风。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="41"/>
        <source>The separate microphone&apos;s stream could not be read.</source>
        <translation>无法读取分离麦克风的流信息。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="43"/>
        <source>The separate microphone delivers no sound.</source>
        <translation>分离麦克风没有声音。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="45"/>
        <source>The separate microphone&apos;s sound cannot be decoded.</source>
        <translation>无法解码分离麦克风的声音。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="47"/>
        <source>Screen and window capture are not available in this build.</source>
        <translation>此版本不支持屏幕与窗口采集。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="49"/>
        <source>The source stopped delivering.</source>
        <translation>信号源已中断。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="59"/>
        <source>Unable to start stream/output.</source>
        <translation>无法启动推流/输出。</translation>
    </message>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="71"/>
        <source>outputs could not start (see the log for the reason)</source>
        <translation>输出无法启动（原因见日志）</translation>
    </message>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="280"/>
        <source>the recording failed during the run (%1); the streams went on, and it went on in a new file once it could</source>
        <translation>录制在运行中失败（%1）；推流未受影响，录制在能够写入后继续写入新文件</translation>
    </message>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="300"/>
        <source>channel %1: the source never opened (%2)</source>
        <translation>通道 %1：信号源始终未能打开（%2）</translation>
    </message>
</context>
</TS>
