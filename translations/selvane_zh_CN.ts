<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>HeadlessRunner</name>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="252" />
        <source>the recording failed during the run (%1); the streams went on, and it went on in a new file once it could</source>
        <translation>录制在运行中失败（%1）；推流未中断，录制在可写时已转入新文件继续</translation>
    </message>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="261" />
        <source>channel %1: the source never opened (%2)</source>
        <translation>通道 %1：源始终未能打开（%2）</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../app/MainWindow.cpp" line="73" />
        <source>Unable to start stream/output.

If the log shows RTMP_Connect0 / 10060, the PC cannot TCP-reach the server (common for YouTube rtmp://:1935). Try:
• Use a VPN/proxy in TUN mode
• Or paste rtmps://… (YouTube supports RTMPS on port 443)
• Confirm the stream key and that Live is enabled in YouTube Studio</source>
        <translation>无法启动推流/输出。

如果日志显示 RTMP_Connect0 / 10060，说明本机无法通过 TCP 连接到服务器（YouTube 的 rtmp://:1935 常见此问题）。请尝试：
• 使用 TUN 模式的 VPN/代理
• 或改用 rtmps://…（YouTube 支持 443 端口的 RTMPS）
• 确认推流密钥正确，且已在 YouTube Studio 中开启直播</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="211" />
        <source>Channel %1: %2</source>
        <translation>通道 %1：%2</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="356" />
        <source>Output Settings</source>
        <translation>输出设置</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="358" />
        <source>Output Preview</source>
        <translation>输出预览</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="360" />
        <source>Audio Mixer</source>
        <translation>混音器</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="362" />
        <source>Text Overlay</source>
        <translation>文字叠加</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="364" />
        <source>Video Overlay</source>
        <translation>视频叠加</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="366" />
        <source>Image Playback</source>
        <translation>图片播放</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="419" />
        <source>&amp;File</source>
        <translation>文件(&amp;F)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="420" />
        <source>Export Drawing...</source>
        <translation>导出涂鸦...</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="421" />
        <source>Open Output Folder</source>
        <translation>打开输出文件夹</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="422" />
        <source>E&amp;xit</source>
        <translation>退出(&amp;X)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="423" />
        <source>&amp;View</source>
        <translation>视图(&amp;V)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="424" />
        <source>Drawing Tools</source>
        <translation>绘图工具</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="425" />
        <source>Reset Workspace Layout</source>
        <translation>重置工作区布局</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="426" />
        <source>&amp;Tools</source>
        <translation>工具(&amp;T)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="427" />
        <source>Program Scheduling...</source>
        <translation>节目编排...</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="428" />
        <source>Network Proxy...</source>
        <translation>网络代理...</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="429" />
        <source>&amp;Help</source>
        <translation>帮助(&amp;H)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="430" />
        <source>Language</source>
        <translation>语言</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="433" />
        <location filename="../app/MainWindow.cpp" line="729" />
        <source>About Selvane</source>
        <translation>关于 Selvane</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="439" />
        <source>Program frame rate</source>
        <translation>节目帧率</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="440" />
        <source>Dropped frames</source>
        <translation>丢帧</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="441" />
        <source>CPU use</source>
        <translation>CPU 占用</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="442" />
        <source>Output bitrate</source>
        <translation>输出码率</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="443" />
        <source>Stream target status</source>
        <translation>推流目标状态</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="471" />
        <source>The recording failed: %1

The streams go on. A new file is tried every second and the recording goes on there as soon as writing works.</source>
        <translation>录制失败：%1

推流继续进行。每秒会尝试一个新文件，一旦可以写入，录制就在新文件中继续。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="493" />
        <source>%1 fps</source>
        <translation>%1 帧/秒</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="495" />
        <source>dropped: decoders %1, encoder %2</source>
        <translation>丢帧：解码 %1，编码 %2</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="496" />
        <source>CPU %1 %</source>
        <translation>CPU %1 %</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="496" />
        <source>CPU –</source>
        <translation>CPU –</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="497" />
        <source>%1 kbit/s</source>
        <translation>%1 kbit/s</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="498" />
        <source>outputs off</source>
        <translation>输出未开启</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="519" />
        <source>Target %1: %2</source>
        <translation>目标 %1：%2</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="536" />
        <source>Source</source>
        <translation>输入源</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="557" />
        <source>Output</source>
        <translation>输出</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="578" />
        <source>Please fill output file path or stream URL, and select at least one output target.</source>
        <translation>请填写输出文件路径或推流地址，并至少勾选一个输出目标。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="588" />
        <source>Stream %1 expects a %2:// URL.</source>
        <translation>推流 %1 需要 %2:// 地址。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="599" />
        <source>8K output uses HEVC. Standard RTMP services accept H.264 only.
Use a HEVC-capable SRT destination or record to MP4/MKV.</source>
        <translation>8K 输出使用 HEVC 编码，标准 RTMP 服务只接受 H.264。
请使用支持 HEVC 的 SRT 目标，或录制为 MP4/MKV。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="606" />
        <source>The selected 8K hardware HEVC encoder is unavailable. Update the GPU driver or choose a supported GPU.

</source>
        <translation>所选的 8K 硬件 HEVC 编码器不可用。请更新显卡驱动或选择受支持的显卡。

</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="703" />
        <source>Outputs are running</source>
        <translation>输出正在运行</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="704" />
        <source>Recording or streaming is running. Stop the outputs and close Selvane?</source>
        <translation>录制或推流正在进行。要停止输出并关闭 Selvane 吗？</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="724" />
        <source>Output Folder</source>
        <translation>输出文件夹</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="724" />
        <source>Unable to open the output folder.</source>
        <translation>无法打开输出文件夹。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="730" />
        <source>Selvane %1
Live video mixer: four input channels, overlays, audio mixing, recording and live streaming.</source>
        <translation>Selvane %1
直播视频混合器：四路输入、叠加、混音、录制与直播推流。</translation>
    </message>
</context>
<context>
    <name>ProgramArrangement</name>
    <message>
        <location filename="../cli/CommandLine.cpp" line="93" />
        <source>Unable to open the file.</source>
        <translation>无法打开文件。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="116" />
        <source>Schedule check passed: %1 base clip(s), %2 overlay clip(s).</source>
        <translation>节目编排检查通过：%1 个基础片段，%2 个叠加片段。</translation>
    </message>
    <message>
        <location filename="../schedule/ScheduleRunner.cpp" line="69" />
        <source>Add at least one valid base clip.</source>
        <translation>请至少添加一个有效的基础片段。</translation>
    </message>
</context>
<context>
    <name>arrangement</name>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="77" />
        <source>Base clip %1: channel %2 does not exist; channel %3 plays instead.</source>
        <translation>基础片段 %1：通道 %2 不存在，改为播放通道 %3。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="195" />
        <source>the document is not an object</source>
        <translation>文档不是一个对象</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="220" />
        <source>Invalid Schedule</source>
        <translation>无效的节目编排</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="223" />
        <source>Missing Media</source>
        <translation>媒体缺失</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="243" />
        <source>Every base clip needs an ID.</source>
        <translation>每个基础片段都需要 ID。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="245" />
        <source>Duplicate base clip ID: %1</source>
        <translation>基础片段 ID 重复：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="248" />
        <location filename="../schedule/ProgramArrangement.cpp" line="267" />
        <source>End time must be later than start time.</source>
        <translation>结束时间必须晚于开始时间。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="250" />
        <source>Select an image directory.</source>
        <translation>请选择图片目录。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="252" />
        <source>Select a video for the channel.</source>
        <translation>请为通道选择视频。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="254" />
        <source>Base video was not found: %1</source>
        <translation>找不到基础视频：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="257" />
        <source>Image directory was not found: %1</source>
        <translation>找不到图片目录：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="262" />
        <source>Every overlay clip needs an ID.</source>
        <translation>每个叠加片段都需要 ID。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="264" />
        <source>Duplicate overlay clip ID: %1</source>
        <translation>叠加片段 ID 重复：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="269" />
        <source>Overlay text cannot be empty.</source>
        <translation>叠加文字不能为空。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="271" />
        <source>Select an overlay image file.</source>
        <translation>请选择叠加图片文件。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="273" />
        <source>Overlay image was not found: %1</source>
        <translation>找不到叠加图片：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="275" />
        <source>Select an overlay video.</source>
        <translation>请选择叠加视频。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="277" />
        <source>Overlay video was not found: %1</source>
        <translation>找不到叠加视频：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="280" />
        <source>Add at least one valid base clip.</source>
        <translation>请至少添加一个有效的基础片段。</translation>
    </message>
</context>
<context>
    <name>selvane</name>
    <message>
        <location filename="../cli/CommandLine.cpp" line="26" />
        <source>Selvane live video mixer. Without options the mixer window opens.</source>
        <translation>Selvane 直播视频混合器。不带选项时打开混合器窗口。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="29" />
        <source>Run the engine without a window (no instance lock).</source>
        <translation>无窗口运行引擎（不占用单实例锁）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="31" />
        <source>Play this program schedule (JSON) into the outputs.</source>
        <translation>将此节目编排（JSON）播出到输出。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="33" />
        <source>Validate a program schedule and print it in the current format.</source>
        <translation>校验节目编排并以当前格式输出。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="35" />
        <source>Run the built-in demo: test signals, a schedule, a ticker and an image overlay (no files needed).</source>
        <translation>运行内置演示：测试信号、节目编排、滚动字幕和图片叠加（无需任何文件）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="38" />
        <source>Load a source into input channel N (1-4): a file path, a network URL, a capture address or lavfi://GRAPH. Repeatable.</source>
        <translation>为输入通道 N（1-4）加载信号源：文件路径、网络地址、采集地址或 lavfi://GRAPH。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="41" />
        <source>Channel (1-4) that forms the program picture. Default 1.</source>
        <translation>构成节目画面的通道（1-4），默认 1。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="43" />
        <source>Stop after this many seconds (default: until Ctrl+C).</source>
        <translation>运行指定秒数后停止（默认：直到 Ctrl+C）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="45" />
        <source>Window: start the recording and streams of the show at once (without --headless they wait for the Start button).</source>
        <translation>窗口模式：立即开始节目的录制与推流（不加此项时等待按下“开始输出”）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="48" />
        <source>Preview (speaker) volume of channel N, linear, e.g. 1=0.5. Repeatable.</source>
        <translation>通道 N 的预览（扬声器）音量，线性，例如 1=0.5。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="51" />
        <source>Volume of the program channel in the program mix, linear (default 1).</source>
        <translation>节目通道在节目混音中的音量，线性（默认 1）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="54" />
        <source>Program bus gain for recording and streaming, in percent (default 100).</source>
        <translation>录制与推流的节目总线增益，百分比（默认 100）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="57" />
        <source>Show a scrolling ticker with these words. Repeatable.</source>
        <translation>显示滚动字幕。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="59" />
        <source>Show a picture in the rectangle x,y,w,h of the 640x360 scene. Repeatable.</source>
        <translation>在 640x360 场景的矩形 x,y,w,h 中显示图片。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="62" />
        <source>Play a video (looping) in the rectangle x,y,w,h of the 640x360 scene. Repeatable.</source>
        <translation>在 640x360 场景的矩形 x,y,w,h 中循环播放视频。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="66" />
        <source>Record the program to this file (MP4, MKV, MOV, TS ...).</source>
        <translation>将节目录制到此文件（MP4、MKV、MOV、TS……）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="68" />
        <source>Start a new recording file at a keyframe after this many minutes.</source>
        <translation>录制满指定分钟后在关键帧处开始新文件。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="72" />
        <source>Start a new recording file at a keyframe once a file reaches this many GiB.</source>
        <translation>文件达到指定 GiB 后在关键帧处开始新文件。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="74" />
        <source>Publish the program to this URL (rtmp://, rtmps://, srt://, udp:// ...); #FORMAT picks the container (flv, mpegts). Repeatable.</source>
        <translation>将节目推流到此地址（rtmp://、rtmps://、srt://、udp://……）；#FORMAT 指定封装格式（flv、mpegts）。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="78" />
        <source>Output size, e.g. 1280x720 (default: same as the program).</source>
        <translation>输出尺寸，例如 1280x720（默认：与节目相同）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="79" />
        <source>Output frame rate: 30 or 60 (default 30).</source>
        <translation>输出帧率：30 或 60（默认 30）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="80" />
        <source>Video bitrate in kbit/s (default: automatic).</source>
        <translation>视频码率，kbit/s（默认：自动）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="82" />
        <source>Video encoder: auto, hardware or software (default auto).</source>
        <translation>视频编码器：auto、hardware 或 software（默认 auto）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="84" />
        <source>Quality preset: performance, balanced or quality (default balanced).</source>
        <translation>质量预设：performance、balanced 或 quality（默认 balanced）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="165" />
        <source>--record expects a file path</source>
        <translation>--record 需要文件路径</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="175" />
        <source>--%1 expects a positive number, got "%2"</source>
        <translation>--%1 需要正数，收到 "%2"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="186" />
        <source>segment limits need --record</source>
        <translation>分段限制需要 --record</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="207" />
        <source>--stream expects a URL such as rtmp://host/app/key, got "%1"</source>
        <translation>--stream 需要类似 rtmp://host/app/key 的地址，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="228" />
        <source>--size expects an even width and height, got "%1"</source>
        <translation>--size 的宽和高必须是偶数，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="327" />
        <source>overlay "%1": "%2" is not a file that can be read</source>
        <translation>叠加 "%1"："%2" 不是可读取的文件</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="196" />
        <source>--record: "%1" names no known container (use .mp4, .mkv, .mov, .ts ...)</source>
        <translation>--record: "%1" 不是已知的容器格式（请用 .mp4、.mkv、.mov、.ts 等）</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="200" />
        <source>--record: the folder of "%1" does not exist</source>
        <translation>--record: "%1" 所在的文件夹不存在</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="203" />
        <source>--record: the folder of "%1" cannot be written</source>
        <translation>--record: "%1" 所在的文件夹无法写入</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="210" />
        <source>--stream: no container for "%1"; add #FORMAT (for example #flv or #mpegts)</source>
        <translation>--stream: 无法确定 "%1" 的容器格式；请加上 #格式（例如 #flv 或 #mpegts）</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="222" />
        <source>--size expects WIDTHxHEIGHT, got "%1"</source>
        <translation>--size 需要 宽x高，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="236" />
        <source>--fps expects 30 or 60, got "%1"</source>
        <translation>--fps 需要 30 或 60，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="245" />
        <source>--bitrate expects kbit/s from 100 to 400000, got "%1"</source>
        <translation>--bitrate 需要 100 到 400000 之间的 kbit/s，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="254" />
        <source>--encoder expects auto, hardware or software, got "%1"</source>
        <translation>--encoder 需要 auto、hardware 或 software，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="264" />
        <source>--preset expects performance, balanced or quality, got "%1"</source>
        <translation>--preset 需要 performance、balanced 或 quality，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="282" />
        <source>--volume expects N=V with N from 1 to 4 and V from 0 to 4, got "%1"</source>
        <translation>--volume 需要 N=V（N 为 1 到 4，V 为 0 到 4），收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="292" />
        <source>--program-volume expects a number from 0 to 4, got "%1"</source>
        <translation>--program-volume 需要 0 到 4 之间的数，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="301" />
        <source>--gain expects a percentage from 0 to 1000, got "%1"</source>
        <translation>--gain 需要 0 到 1000 之间的百分比，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="335" />
        <source>at most %1 image and video overlays</source>
        <translation>图片与视频叠加最多 %1 个</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="356" />
        <source>--channel expects N=ADDRESS with N from 1 to 4, got "%1"</source>
        <translation>--channel 需要 N=地址（N 为 1 到 4），收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="366" />
        <source>--base expects a channel from 1 to 4, got "%1"</source>
        <translation>--base 需要 1 到 4 的通道，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="375" />
        <source>--duration expects a positive number of seconds, got "%1"</source>
        <translation>--duration 需要正的秒数，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="386" />
        <source>--demo brings its own schedule; leave out --schedule</source>
        <translation>--demo 自带节目编排；请去掉 --schedule</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="395" />
        <source>--headless needs at least one --channel</source>
        <translation>--headless 至少需要一个 --channel</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="399" />
        <source>the base channel %1 has no source</source>
        <translation>基础通道 %1 没有信号源</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="55" />
        <source>the text overlay needs some words, got "%1"</source>
        <translation>文字叠加需要内容，收到 "%1"</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="61" />
        <source>the text overlay takes at most %1 characters, got %2</source>
        <translation>文字叠加最多 %1 个字符，实际为 %2</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="75" />
        <source>overlay "%1": expected PATH@x,y,w,h (a rectangle in the 640x360 scene)</source>
        <translation>叠加 "%1"：需要 路径@x,y,w,h（640x360 场景中的矩形）</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="81" />
        <source>overlay "%1": the path before '@' is empty</source>
        <translation>叠加 "%1"：'@' 前的路径为空</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="86" />
        <source>overlay "%1": expected four numbers x,y,w,h after '@'</source>
        <translation>叠加 "%1"：'@' 后需要四个数 x,y,w,h</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="94" />
        <source>overlay "%1": "%2" is not a number</source>
        <translation>叠加 "%1"："%2" 不是数字</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="99" />
        <source>overlay "%1": width and height must be positive</source>
        <translation>叠加 "%1"：宽和高必须为正</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="20" />
        <source>The source could not be opened.</source>
        <translation>无法打开信号源。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="22" />
        <source>The source's streams could not be read.</source>
        <translation>无法读取信号源的流信息。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="24" />
        <source>The source has no picture.</source>
        <translation>信号源没有画面。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="26" />
        <source>The source's picture cannot be decoded.</source>
        <translation>无法解码信号源的画面。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="28" />
        <source>Out of memory while opening the source.</source>
        <translation>打开信号源时内存不足。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="30" />
        <source>Capture devices are not available: this FFmpeg was built without libavdevice.</source>
        <translation>采集设备不可用：此 FFmpeg 未包含 libavdevice。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="32" />
        <source>The camera or microphone could not be opened (is the device name the system's own? Is another program using it?)</source>
        <translation>无法打开摄像头或麦克风（设备名是否与系统一致？是否被其他程序占用？）</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="35" />
        <source>The separate microphone address is invalid (it needs dshow://…&amp;audio=NAME).</source>
        <translation>分离麦克风地址无效（需 dshow://…&amp;audio=设备名）</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="37" />
        <source>Capture devices are not available for the separate microphone.</source>
        <translation>分离麦克风的采集设备不可用。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="39" />
        <source>The separate microphone could not be opened.</source>
        <translation>无法打开分离麦克风。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="41" />
        <source>The separate microphone's stream could not be read.</source>
        <translation>无法读取分离麦克风的流信息。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="43" />
        <source>The separate microphone delivers no sound.</source>
        <translation>分离麦克风没有声音。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="45" />
        <source>The separate microphone's sound cannot be decoded.</source>
        <translation>无法解码分离麦克风的声音。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="47" />
        <source>Screen and window capture are not available in this build.</source>
        <translation>此版本不支持屏幕与窗口采集。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="49" />
        <source>Screen and window capture need an X11 display, and this session has none (on Wayland, run Selvane under XWayland).</source>
        <translation>屏幕和窗口采集需要 X11 显示，而当前会话没有（在 Wayland 下请通过 XWayland 运行 Selvane）。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="52" />
        <source>Invalid monitor index.</source>
        <translation>无效的显示器索引</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="54" />
        <source>wgc:// needs a valid hwnd parameter (decimal or 0x hexadecimal).</source>
        <translation>wgc:// 需要有效 hwnd 参数（十进制或 0x 十六进制）</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="56" />
        <source>The captured window was closed.</source>
        <translation>被采集的窗口已关闭。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="58" />
        <source>The source stopped delivering.</source>
        <translation>信号源已中断。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="68" />
        <source>Unable to start stream/output.</source>
        <translation>无法启动推流/输出。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="79" />
        <source>The recording file "%1" names no known container (use .mp4, .mkv, .mov, .ts ...).</source>
        <translation>录制文件“%1”的扩展名不是已知的封装格式（请使用 .mp4、.mkv、.mov、.ts 等）。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="83" />
        <source>The folder of the recording file "%1" does not exist.</source>
        <translation>录制文件“%1”所在的文件夹不存在。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="85" />
        <source>The folder of the recording file "%1" cannot be written.</source>
        <translation>录制文件“%1”所在的文件夹无法写入。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="87" />
        <source>The stream target "%1" is not a URL such as rtmp://host/app/key.</source>
        <translation>推流目标“%1”不是有效地址（例如 rtmp://host/app/key）。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="90" />
        <source>No container is known for the stream target "%1"; add #FORMAT (for example #flv or #mpegts).</source>
        <translation>无法确定推流目标“%1”的封装格式；请加上 #格式（例如 #flv 或 #mpegts）。</translation>
    </message>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="52" />
        <source>outputs could not start (see the log for the reason)</source>
        <translation>输出无法启动（原因见日志）</translation>
    </message>
    <message>
        <location filename="../cli/ShowSetup.cpp" line="48" />
        <source>Unable to open the file. %1</source>
        <translation>无法打开文件。%1</translation>
    </message>
</context>
<context>
    <name>selvane::AudioMixerPanel</name>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="187" />
        <source>%1 dB</source>
        <translation>%1 dB</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="235" />
        <location filename="../panels/AudioMixerPanel.cpp" line="294" />
        <source>System default</source>
        <translation>系统默认</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="246" />
        <source>Channel %1</source>
        <translation>通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="249" />
        <source>Program</source>
        <translation>节目</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="252" />
        <source>Overlay %1</source>
        <translation>叠加 %1</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="262" />
        <source>Channel %1 volume</source>
        <translation>通道 %1 音量</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="263" />
        <source>Channel %1 mute</source>
        <translation>通道 %1 静音</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="266" />
        <source>Program volume</source>
        <translation>节目音量</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="267" />
        <source>Program mute</source>
        <translation>节目静音</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="270" />
        <source>%1 volume</source>
        <translation>%1 音量</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="271" />
        <source>%1 mute</source>
        <translation>%1 静音</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="272" />
        <source>On program</source>
        <translation>进节目</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="273" />
        <source>%1 on program</source>
        <translation>%1 进节目</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="275" />
        <source>Mute</source>
        <translation>静音</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="277" />
        <source>What you hear of this channel (the program has its own level)</source>
        <translation>监听中此通道的音量（节目有自己的电平）</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="289" />
        <source>Preview output:</source>
        <translation>监听输出：</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="290" />
        <source>Preview output device</source>
        <translation>监听输出设备</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="291" />
        <source>Refresh</source>
        <translation>刷新</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="292" />
        <source>Refresh output devices</source>
        <translation>刷新输出设备</translation>
    </message>
</context>
<context>
    <name>selvane::ChannelPanel</name>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="175" />
        <location filename="../panels/ChannelPanel.cpp" line="269" />
        <source>(no source)</source>
        <translation>（无源）</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="198" />
        <source>LIVE</source>
        <translation>直播</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="206" />
        <source>idle</source>
        <translation>空闲</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="208" />
        <source>connecting</source>
        <translation>连接中</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="210" />
        <source>live</source>
        <translation>直播中</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="210" />
        <source>playing</source>
        <translation>播放中</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="212" />
        <source>paused</source>
        <translation>已暂停</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="214" />
        <source>ended</source>
        <translation>已结束</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="216" />
        <source>error</source>
        <translation>错误</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="216" />
        <source>error: %1</source>
        <translation>错误：%1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="218" />
        <source>reconnecting</source>
        <translation>重连中</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="218" />
        <source>reconnecting: %1</source>
        <translation>重连中：%1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="229" />
        <source>Channel %1 state</source>
        <translation>通道 %1 状态</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="253" />
        <source>&lt;b&gt;%1&lt;/b&gt;  PROGRAM</source>
        <translation>&lt;b&gt;%1&lt;/b&gt;  节目</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="253" />
        <source>&lt;b&gt;%1&lt;/b&gt;</source>
        <translation>&lt;b&gt;%1&lt;/b&gt;</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="254" />
        <source>Source…</source>
        <translation>选择源…</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="255" />
        <source>Choose what channel %1 plays</source>
        <translation>选择通道 %1 播放的内容</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="256" />
        <source>Clear</source>
        <translation>清除</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="257" />
        <source>Take</source>
        <translation>切入</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="258" />
        <source>Put channel %1 on the program (key %1)</source>
        <translation>将通道 %1 切入节目（按键 %1）</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="259" />
        <source>Pause</source>
        <translation>暂停</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="260" />
        <source>Pause channel %1</source>
        <translation>暂停通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="261" />
        <source>Loop</source>
        <translation>循环</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="262" />
        <source>Loop channel %1</source>
        <translation>循环通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="263" />
        <source>Channel %1 position</source>
        <translation>通道 %1 播放位置</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="264" />
        <source>Channel %1 time</source>
        <translation>通道 %1 时间</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="265" />
        <source>Channel %1 source</source>
        <translation>通道 %1 源</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="266" />
        <source>Channel %1 picture</source>
        <translation>通道 %1 画面</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="267" />
        <source>Channel %1 title</source>
        <translation>通道 %1 标题</translation>
    </message>
</context>
<context>
    <name>selvane::OutputSettingsPanel</name>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="417" />
        <source>Recording folder</source>
        <translation>录制文件夹</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="438" />
        <source>8K requires hardware HEVC encoding</source>
        <translation>8K 需要硬件 HEVC 编码</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="442" />
        <source>8K60 uses the Performance preset to maintain real-time output</source>
        <translation>8K60 使用“性能”预设以保持实时输出</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="527" />
        <source>failed: %1</source>
        <translation>失败：%1</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="530" />
        <source>recording %1  %2  %3 MB</source>
        <translation>录制中 %1  %2  %3 MB</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="536" />
        <source>stopped</source>
        <translation>已停止</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="553" />
        <source>&lt;b&gt;Recording&lt;/b&gt;</source>
        <translation>&lt;b&gt;录制&lt;/b&gt;</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="554" />
        <location filename="../panels/OutputSettingsPanel.cpp" line="555" />
        <source>Record to file</source>
        <translation>录制到文件</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="556" />
        <source>Folder and file name; {date} and {time} become the start time</source>
        <translation>文件夹和文件名；{date} 和 {time} 会替换为开始时间</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="557" />
        <source>Browse…</source>
        <translation>浏览…</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="558" />
        <source>Choose the recording folder</source>
        <translation>选择录制文件夹</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="559" />
        <source>Container:</source>
        <translation>封装格式：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="560" />
        <source>Container</source>
        <translation>封装格式</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="561" />
        <location filename="../panels/OutputSettingsPanel.cpp" line="562" />
        <source>Segment recording</source>
        <translation>分段录制</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="563" />
        <source> min</source>
        <translation> 分钟</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="564" />
        <source>Segment minutes</source>
        <translation>分段时长</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="565" />
        <source> GiB</source>
        <translation> GiB</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="566" />
        <source>Segment size</source>
        <translation>分段大小</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="567" />
        <source>Start a new file at a keyframe when either limit is reached</source>
        <translation>达到任一限制时，在关键帧处开始新文件</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="568" />
        <source>Recording state</source>
        <translation>录制状态</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="569" />
        <source>&lt;b&gt;Stream targets&lt;/b&gt;</source>
        <translation>&lt;b&gt;推流目标&lt;/b&gt;</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="571" />
        <source>All enabled destinations share one encoder to minimize CPU/GPU load.</source>
        <translation>所有启用的目标共用一个编码器，以降低 CPU/GPU 负载。</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="572" />
        <source>On</source>
        <translation>启用</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="572" />
        <source>Kind</source>
        <translation>类型</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="572" />
        <source>Address</source>
        <translation>地址</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="572" />
        <source>Status</source>
        <translation>状态</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="573" />
        <source>Add</source>
        <translation>添加</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="574" />
        <source>Edit</source>
        <translation>编辑</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="575" />
        <source>Edit Target</source>
        <translation>编辑目标</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="576" />
        <source>Remove</source>
        <translation>删除</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="577" />
        <source>&lt;b&gt;Encoding&lt;/b&gt;</source>
        <translation>&lt;b&gt;编码&lt;/b&gt;</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="578" />
        <source>Resolution:</source>
        <translation>分辨率：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="579" />
        <source>Same as Program</source>
        <translation>与节目相同</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="581" />
        <source>%1 (%2 x %3)</source>
        <translation>%1（%2 x %3）</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="586" />
        <source>Recording/stream output resolution; 'Same as Program' follows current canvas size.</source>
        <translation>录制/推流输出分辨率；“与节目相同”跟随当前画布尺寸。</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="587" />
        <source>Output resolution</source>
        <translation>输出分辨率</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="588" />
        <source>Frame rate:</source>
        <translation>帧率：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="589" />
        <source>Frame rate</source>
        <translation>帧率</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="590" />
        <source>Bitrate:</source>
        <translation>码率：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="591" />
        <source>Video bitrate</source>
        <translation>视频码率</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="592" />
        <source>Automatic</source>
        <translation>自动</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="593" />
        <source>The bitrate follows the preset and the picture size</source>
        <translation>码率跟随预设和画面尺寸</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="594" />
        <source>Automatic bitrate</source>
        <translation>自动码率</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="595" />
        <source>Encoder:</source>
        <translation>编码器：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="596" />
        <source>Auto</source>
        <translation>自动</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="597" />
        <source>Hardware</source>
        <translation>硬件</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="598" />
        <source>Software</source>
        <translation>软件</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="599" />
        <source>Encoder mode</source>
        <translation>编码模式</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="600" />
        <source>Preset:</source>
        <translation>预设：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="601" />
        <source>Performance</source>
        <translation>性能</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="602" />
        <source>Balanced</source>
        <translation>均衡</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="603" />
        <source>Quality</source>
        <translation>质量</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="604" />
        <source>Quality preset</source>
        <translation>质量预设</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="605" />
        <source>Keyframe interval:</source>
        <translation>关键帧间隔：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="606" />
        <source>Keyframe interval</source>
        <translation>关键帧间隔</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="607" />
        <source>Output Gain:</source>
        <translation>输出增益：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="608" />
        <source>Output Gain</source>
        <translation>输出增益</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="609" />
        <source>Adjusts the program gain for recording and streaming only. It does not affect channel mixing or monitoring.</source>
        <translation>仅调整录制和推流的节目增益，不影响通道混音和监听。</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="611" />
        <source>Recording and streaming use the effective canvas resolution. The resolution is locked while output is active.</source>
        <translation>录制和推流使用实际画布分辨率。输出进行时分辨率被锁定。</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="614" />
        <source>Start Outputs</source>
        <translation>开始输出</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="615" />
        <source>Stop Outputs</source>
        <translation>停止输出</translation>
    </message>
</context>
<context>
    <name>selvane::OutputStatusView</name>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="45" />
        <source>connecting</source>
        <translation>连接中</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="47" />
        <source>online</source>
        <translation>在线</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="49" />
        <source>congested</source>
        <translation>拥塞</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="51" />
        <source>reconnecting</source>
        <translation>重连中</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="53" />
        <source>stopped</source>
        <translation>已停止</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="80" />
        <source>Outputs are stopped.</source>
        <translation>输出已停止。</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="82" />
        <source>&lt;b&gt;On air&lt;/b&gt; %1  ·  %2x%3 @ %4 fps  ·  %5 kbit/s</source>
        <translation>&lt;b&gt;播出中&lt;/b&gt; %1  ·  %2x%3 @ %4 帧/秒  ·  %5 kbit/s</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="88" />
        <source>Encoder: %1  ·  frames %2  ·  dropped %3</source>
        <translation>编码器：%1  ·  帧 %2  ·  丢弃 %3</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="95" />
        <source>&lt;span style='color:#ff5a5a'&gt;Recording failed: %1&lt;/span&gt; (%2)</source>
        <translation>&lt;span style='color:#ff5a5a'&gt;录制失败：%1&lt;/span&gt;（%2）</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="98" />
        <source>Recording %1  ·  %2</source>
        <translation>录制 %1  ·  %2</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="110" />
        <source>Output status</source>
        <translation>输出状态</translation>
    </message>
</context>
<context>
    <name>selvane::ProgramPreview</name>
    <message>
        <location filename="../panels/ProgramPreview.cpp" line="148" />
        <source>No signal</source>
        <translation>无信号</translation>
    </message>
</context>
<context>
    <name>selvane::SourceDialog</name>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="208" />
        <source>/path/to/clip.mp4</source>
        <translation>/路径/视频.mp4</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="245" />
        <source>Select media file</source>
        <translation>选择媒体文件</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="246" />
        <source>Media (*.mp4 *.mov *.mkv *.avi *.mp3 *.wav);;All files (*)</source>
        <translation>媒体文件 (*.mp4 *.mov *.mkv *.avi *.mp3 *.wav);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="261" />
        <source>(No camera found)</source>
        <translation>（未找到摄像头）</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="266" />
        <location filename="../panels/SourceDialog.cpp" line="432" />
        <source>(No microphone)</source>
        <translation>（不使用麦克风）</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="285" />
        <source>This session has no X11 display, so nothing can be captured (on Wayland, run Selvane under XWayland).</source>
        <translation>当前会话没有 X11 显示，无法采集（在 Wayland 下请通过 XWayland 运行 Selvane）。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="290" />
        <source>Display %1: %2, %3×%4 at %5,%6</source>
        <translation>显示器 %1：%2，%3×%4，位置 %5,%6</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="300" />
        <source>(No windows — click Refresh)</source>
        <translation>（无可用窗口，点刷新）</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="301" />
        <source>(No display detected)</source>
        <translation>（未检测到显示器）</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="304" />
        <source>Window:</source>
        <translation>窗口：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="304" />
        <source>Display:</source>
        <translation>显示器：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="305" />
        <source>Refresh windows</source>
        <translation>刷新窗口</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="305" />
        <source>Refresh displays</source>
        <translation>刷新显示器</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="307" />
        <location filename="../panels/SourceDialog.cpp" line="402" />
        <source>Window</source>
        <translation>窗口</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="307" />
        <location filename="../panels/SourceDialog.cpp" line="401" />
        <source>Display</source>
        <translation>显示器</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="316" />
        <source>Enter a file or an address first.</source>
        <translation>请先填写文件或地址。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="318" />
        <source>This kind of address is not known (use rtmp://, rtsp://, srt://, http:// …).</source>
        <translation>不认识这种地址（请使用 rtmp://、rtsp://、srt://、http:// 等）。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="320" />
        <source>The address names no server.</source>
        <translation>地址中没有服务器。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="322" />
        <source>No readable file at this path.</source>
        <translation>此路径下没有可读取的文件。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="324" />
        <source>The test signal cannot be made.</source>
        <translation>无法生成该测试信号。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="344" />
        <source>No camera is available; connect one and press Refresh.</source>
        <translation>没有可用的摄像头；请连接后点“刷新设备”。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="363" />
        <source>No window to capture; open it and press Refresh.</source>
        <translation>没有可采集的窗口；请打开窗口后点刷新。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="364" />
        <source>No display to capture.</source>
        <translation>没有可采集的显示器。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="395" />
        <source>Select source - Channel %1</source>
        <translation>选择源 - 通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="396" />
        <source>Source type:</source>
        <translation>源类型：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="397" />
        <source>Local file</source>
        <translation>本地文件</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="398" />
        <source>URL / network stream</source>
        <translation>URL / 网络流</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="399" />
        <source>Test signal</source>
        <translation>测试信号</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="400" />
        <source>Camera / microphone</source>
        <translation>摄像头 / 麦克风</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="407" />
        <source>Address:</source>
        <translation>地址：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="408" />
        <source>Browse…</source>
        <translation>浏览…</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="409" />
        <source>Browse for a media file</source>
        <translation>浏览媒体文件</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="410" />
        <source>Signal:</source>
        <translation>信号：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="413" />
        <source>Bars and tone</source>
        <translation>彩条和测试音</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="413" />
        <source>Moving pattern</source>
        <translation>动态图案</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="413" />
        <source>Colour</source>
        <translation>纯色</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="415" />
        <source>Test signal preset</source>
        <translation>测试信号预设</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="416" />
        <source>Colour:</source>
        <translation>颜色：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="419" />
        <source>Red</source>
        <translation>红</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="419" />
        <source>Green</source>
        <translation>绿</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="419" />
        <source>Blue</source>
        <translation>蓝</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="419" />
        <source>White</source>
        <translation>白</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="419" />
        <source>Black</source>
        <translation>黑</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="419" />
        <source>Grey</source>
        <translation>灰</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="421" />
        <source>Test signal colour</source>
        <translation>测试信号颜色</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="422" />
        <source>Camera:</source>
        <translation>摄像头：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="423" />
        <source>Camera</source>
        <translation>摄像头</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="403" />
        <location filename="../panels/SourceDialog.cpp" line="424" />
        <source>Microphone:</source>
        <translation>麦克风：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="404" />
        <location filename="../panels/SourceDialog.cpp" line="425" />
        <source>Microphone</source>
        <translation>麦克风</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="426" />
        <location filename="../panels/SourceDialog.cpp" line="427" />
        <source>Refresh devices</source>
        <translation>刷新设备</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="428" />
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="429" />
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>selvane::StreamTargetDialog</name>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="21" />
        <source>Stream target</source>
        <translation>推流目标</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="25" />
        <source>Target kind</source>
        <translation>目标类型</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="28" />
        <source>Server URL</source>
        <translation>服务器地址</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="32" />
        <source>Stream key</source>
        <translation>推流密钥</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="33" />
        <location filename="../panels/StreamTargetDialog.cpp" line="38" />
        <source>Show</source>
        <translation>显示</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="35" />
        <source>Show the stream key</source>
        <translation>显示推流密钥</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="38" />
        <source>Hide</source>
        <translation>隐藏</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="40" />
        <location filename="../panels/StreamTargetDialog.cpp" line="42" />
        <source>Use this target</source>
        <translation>使用此目标</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="51" />
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="53" />
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="56" />
        <source>Kind:</source>
        <translation>类型：</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="57" />
        <source>Server:</source>
        <translation>服务器：</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="58" />
        <source>Stream key:</source>
        <translation>推流密钥：</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="81" />
        <source>Enter a server URL such as rtmp://host/app or srt://host:port.</source>
        <translation>请填写服务器地址，例如 rtmp://host/app 或 srt://host:port。</translation>
    </message>
</context>
</TS>
