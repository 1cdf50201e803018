<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>FailoverControl</name>
    <message>
        <location filename="../engine/FailoverControl.cpp" line="239"/>
        <source>The programme will be back shortly</source>
        <translation>节目马上回来</translation>
    </message>
</context>
<context>
    <name>HeadlessRunner</name>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="303"/>
        <source>the twin recording</source>
        <translation>副本录制</translation>
    </message>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="303"/>
        <source>the recording</source>
        <translation>录制</translation>
    </message>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="306"/>
        <source>%1 failed during the run (%2) and no new file could be begun after it; the streams went on</source>
        <translation>%1在运行中失败（%2），之后无法开始新文件；推流继续进行</translation>
    </message>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="310"/>
        <source>%1 failed during the run (%2); it went on in a new file %3 time(s), but was failing again at the end; the streams went on</source>
        <translation>%1在运行中失败（%2）；已在新文件中继续 %3 次，但结束时再次失败；推流继续进行</translation>
    </message>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="314"/>
        <source>%1 failed during the run (%2); the streams went on, and %1 went on in %3</source>
        <translation>%1在运行中失败（%2）；推流继续进行，%1在 %3 中继续</translation>
    </message>
    <message>
        <location filename="../cli/HeadlessRunner.cpp" line="323"/>
        <source>channel %1: the source never opened (%2)</source>
        <translation>通道 %1：源始终未能打开（%2）</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../app/MainWindow.cpp" line="262"/>
        <source>Channel %1: %2</source>
        <translation>通道 %1：%2</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="406"/>
        <source>Schedule: Undo</source>
        <translation>节目编排：撤销</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="407"/>
        <source>Schedule: Redo</source>
        <translation>节目编排：重做</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="423"/>
        <location filename="../app/MainWindow.cpp" line="429"/>
        <location filename="../app/MainWindow.cpp" line="441"/>
        <source>Export Drawing</source>
        <translation>导出涂鸦</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="424"/>
        <source>There is no drawing to export yet. Draw on the program preview with View -&gt; Drawing Tools.</source>
        <translation>还没有可导出的涂鸦。请通过“视图 -&gt; 涂鸦工具”在节目预览上绘制。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="430"/>
        <source>PNG image (*.png)</source>
        <translation>PNG 图片 (*.png)</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="442"/>
        <source>Unable to write the file.</source>
        <translation>无法写入文件。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="445"/>
        <source>Drawing exported to %1</source>
        <translation>涂鸦已导出到 %1</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="762"/>
        <source>About Selvane</source>
        <translation>关于 Selvane</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="573"/>
        <source>The recording failed: %1

The streams go on. A new file is tried every second and the recording goes on there as soon as writing works.</source>
        <translation>录制失败：%1

推流继续进行。每秒会尝试一个新文件，一旦可以写入，录制就在新文件中继续。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="599"/>
        <source>Source</source>
        <translation>输入源</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="617"/>
        <source>Output</source>
        <translation>输出</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="637"/>
        <source>Stream %1 expects a %2:// URL.</source>
        <translation>推流 %1 需要 %2:// 地址。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="718"/>
        <source>Outputs are running</source>
        <translation>输出正在运行</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="719"/>
        <source>Recording or streaming is running. Stop the outputs and close Selvane?</source>
        <translation>录制或推流正在进行。要停止输出并关闭 Selvane 吗？</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="757"/>
        <source>Output Folder</source>
        <translation>输出文件夹</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="757"/>
        <source>Unable to open the output folder.</source>
        <translation>无法打开输出文件夹。</translation>
    </message>
    <message>
        <location filename="../app/MainWindow.cpp" line="763"/>
        <source>Selvane %1
Live video mixer: four input channels, overlays, audio mixing, recording and live streaming.</source>
        <translation>Selvane %1
直播视频混合器：四路输入、叠加、混音、录制与直播推流。</translation>
    </message>
</context>
<context>
    <name>Problem</name>
    <message>
        <location filename="../engine/ProblemText.cpp" line="19"/>
        <source>Please fill output file path or stream URL, and select at least one output target.</source>
        <translation>请填写输出文件路径或推流地址，并至少勾选一个输出目标。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="22"/>
        <source>The outputs are already running.</source>
        <translation>输出已在运行。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="24"/>
        <source>The recording file &quot;%1&quot; names no known container (use .mp4, .mkv, .mov, .ts ...).</source>
        <translation>录制文件“%1”的扩展名不是已知的封装格式（请使用 .mp4、.mkv、.mov、.ts 等）。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="28"/>
        <source>The folder of the recording file &quot;%1&quot; does not exist.</source>
        <translation>录制文件“%1”所在的文件夹不存在。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="32"/>
        <source>The folder of the recording file &quot;%1&quot; cannot be written.</source>
        <translation>录制文件“%1”所在的文件夹无法写入。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="36"/>
        <source>The stream target &quot;%1&quot; is not a URL such as rtmp://host/app/key.</source>
        <translation>推流目标“%1”不是有效地址（例如 rtmp://host/app/key）。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="40"/>
        <source>No container is known for the stream target &quot;%1&quot;; add #FORMAT (for example #flv or #mpegts).</source>
        <translation>无法确定推流目标“%1”的封装格式；请加上 #格式（例如 #flv 或 #mpegts）。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="45"/>
        <source>8K output uses HEVC. Standard RTMP services accept H.264 only.
Use a HEVC-capable SRT destination or record to MP4/MKV.</source>
        <translation>8K 输出使用 HEVC 编码，标准 RTMP 服务只接受 H.264。
请使用支持 HEVC 的 SRT 目标，或录制为 MP4/MKV。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="49"/>
        <source>The selected 8K hardware HEVC encoder is unavailable. Update the GPU driver or choose a supported GPU.</source>
        <translation>所选的 8K 硬件 HEVC 编码器不可用。请更新显卡驱动或选择受支持的显卡。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="54"/>
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
        <location filename="../engine/ProblemText.cpp" line="62"/>
        <source>A source cannot be the file the outputs record to.</source>
        <translation>输入源不能与当前录制的输出文件相同。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="64"/>
        <source>A source cannot be the address the outputs record to.</source>
        <translation>输入源不能与当前录制的输出地址相同。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="67"/>
        <source>A source cannot be a file that a selected stream target writes.</source>
        <translation>输入源不能与已勾选的推流地址（文件目标）相同。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="69"/>
        <source>A source cannot be the address of a selected stream target.</source>
        <translation>输入源不能与已勾选的推流地址相同。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="72"/>
        <source>There is no channel %1: channels are 1 to 4.</source>
        <translation>没有通道 %1：通道为 1 到 4。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="75"/>
        <source>The address is empty.</source>
        <translation>地址为空。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="77"/>
        <source>&quot;%1&quot; names no protocol this system has.</source>
        <translation>“%1”所用的协议本系统不支持。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="80"/>
        <source>&quot;%1&quot; is a network address without a host.</source>
        <translation>“%1”是没有主机的网络地址。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="84"/>
        <source>There is no readable file at &quot;%1&quot;.</source>
        <translation>“%1”处没有可读取的文件。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="87"/>
        <source>The test signal&apos;s graph in &quot;%1&quot; does not parse.</source>
        <translation>“%1”中的测试信号滤镜图无法解析。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="91"/>
        <source>Channel %1 has no source.</source>
        <translation>通道 %1 没有信号源。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="93"/>
        <source>The text overlay needs some words.</source>
        <translation>文字叠加需要填写文字。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="95"/>
        <source>A text holds at most %1 characters; this one has %2.</source>
        <translation>文字最多 %1 个字符；此文字有 %2 个字符。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="100"/>
        <source>At most %1 text overlays can be shown.</source>
        <translation>最多可显示 %1 个文字叠加。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="103"/>
        <source>At most %1 image and video overlays can be shown.</source>
        <translation>最多可显示 %1 个图片和视频叠加。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="107"/>
        <source>There is no overlay %1.</source>
        <translation>没有叠加 %1。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="109"/>
        <source>The twin recording &quot;%1&quot; is the recording itself: choose another folder or disk.</source>
        <translation>副本录制 &quot;%1&quot; 就是录制文件本身：请选择另一个文件夹或磁盘。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="113"/>
        <source>That time has passed: %1</source>
        <translation>该时间已经过去：%1</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="115"/>
        <source>The outputs must stop after they start.</source>
        <translation>输出的停止时间必须晚于开始时间。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="117"/>
        <source>A profile&apos;s name holds letters, digits, &quot;-&quot; and &quot;_&quot; only: &quot;%1&quot;</source>
        <translation>配置名称只能包含字母、数字、“-”和“_”：“%1”</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="121"/>
        <source>There are two profiles named &quot;%1&quot;.</source>
        <translation>有两个名为“%1”的配置。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="124"/>
        <source>There is no profile named &quot;%1&quot;.</source>
        <translation>没有名为“%1”的配置。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="127"/>
        <source>The profile &quot;%1&quot; runs faster than the program&apos;s %2 frames a second.</source>
        <translation>配置“%1”的帧率高于节目的每秒 %2 帧。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="132"/>
        <source>The profile &quot;%1&quot; needs an even width and height from 16 to 8192.</source>
        <translation>配置“%1”的宽度和高度须为 16 到 8192 之间的偶数。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="136"/>
        <source>Channels 1 to 4 can be recorded on their own, not %1.</source>
        <translation>只有通道 1 到 4 可以单独录制，不能是 %1。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="140"/>
        <source>Channel %1 is recorded on its own twice.</source>
        <translation>通道 %1 被设置了两次单独录制。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="143"/>
        <source>A channel&apos;s own recording is written beside the program&apos;s: choose a recording file first.</source>
        <translation>通道的单独录制文件写在节目录制文件旁边：请先选择录制文件。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="146"/>
        <source>HLS segments last 1 to 6 seconds, not %1.</source>
        <translation>HLS 分片时长为 1 到 6 秒，不能是 %1。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="149"/>
        <source>An HLS playlist names 2 to 60 segments, not %1.</source>
        <translation>HLS 播放列表包含 2 到 60 个分片，不能是 %1。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="152"/>
        <source>Choose a folder or images first.</source>
        <translation>请先选择文件夹或图片。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="154"/>
        <source>The backup of channel %1 must be another channel (channel:1 to channel:4) or a file or stream address: %2</source>
        <translation>通道 %1 的备份必须是另一个通道（channel:1 到 channel:4）或文件、流地址：%2</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="160"/>
        <source>Failover times lie between 100 ms and one hour, not %1 ms.</source>
        <translation>故障切换时间须在 100 毫秒到一小时之间，而不是 %1 毫秒。</translation>
    </message>
    <message>
        <location filename="../engine/ProblemText.cpp" line="164"/>
        <source>The slate cannot be read: %1</source>
        <translation>无法读取垫片画面：%1</translation>
    </message>
</context>
<context>
    <name>ProgramArrangement</name>
    <message>
        <location filename="../cli/CommandLine.cpp" line="166"/>
        <source>Unable to open the file.</source>
        <translation>无法打开文件。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="190"/>
        <source>Schedule check passed: %1 base clip(s), %2 overlay clip(s).</source>
        <translation>节目编排检查通过：%1 个基础片段，%2 个叠加片段。</translation>
    </message>
    <message>
        <location filename="../schedule/ScheduleRunner.cpp" line="79"/>
        <source>Add at least one valid base clip.</source>
        <translation>请至少添加一个有效的基础片段。</translation>
    </message>
</context>
<context>
    <name>arrangement</name>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="81"/>
        <source>Base clip %1: channel %2 does not exist; channel %3 plays instead.</source>
        <translation>基础片段 %1：通道 %2 不存在，改为播放通道 %3。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="98"/>
        <source>Base clip %1: %2; it cuts instead.</source>
        <translation>基础片段 %1：%2；改为直接切换。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="145"/>
        <source>an object is not closed: expected &quot;,&quot; or &quot;}&quot;</source>
        <translation>对象未闭合：应为 &quot;,&quot; 或 &quot;}&quot;</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="147"/>
        <source>expected &quot;:&quot; after a key</source>
        <translation>键后应为 &quot;:&quot;</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="149"/>
        <source>a list is not closed: expected &quot;,&quot; or &quot;]&quot;</source>
        <translation>列表未闭合：应为 &quot;,&quot; 或 &quot;]&quot;</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="151"/>
        <source>expected &quot;,&quot; between two values</source>
        <translation>两个值之间应为 &quot;,&quot;</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="153"/>
        <source>expected a value: a string, a number, an object, a list, true, false or null</source>
        <translation>应为一个值：字符串、数字、对象、列表、true、false 或 null</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="155"/>
        <source>the text ends in the middle of a number</source>
        <translation>文本在数字中间结束</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="157"/>
        <source>a number that cannot be read</source>
        <translation>无法读取的数字</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="159"/>
        <source>an escape sequence JSON does not have</source>
        <translation>JSON 中不存在的转义序列</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="161"/>
        <source>text that is not UTF-8</source>
        <translation>不是 UTF-8 的文本</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="163"/>
        <source>a string is not closed: expected &quot;</source>
        <translation>字符串未闭合：应为 &quot;</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="165"/>
        <source>expected an object ({...}) at the top</source>
        <translation>顶层应为一个对象（{...}）</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="167"/>
        <source>objects and lists nested too deep</source>
        <translation>对象和列表嵌套过深</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="169"/>
        <source>the document is too large</source>
        <translation>文档过大</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="171"/>
        <source>more text after the end of the document</source>
        <translation>文档结束后还有多余的文本</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="173"/>
        <source>not JSON</source>
        <translation>不是 JSON</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="182"/>
        <source>the file is empty: expected a schedule document ({...})</source>
        <translation>文件为空：应为节目编排文档（{...}）</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="189"/>
        <source>line %1, column %2: %3</source>
        <translation>第 %1 行，第 %2 列：%3</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="194"/>
        <source> (the text ends there: is the file cut short?)</source>
        <translation>（文本在此结束：文件是否被截断？）</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="204"/>
        <source>Base clip %1 shows channel %2, which has no source.</source>
        <translation>基础片段 %1 显示通道 %2，但该通道没有信号源。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="291"/>
        <source>line 1, column 1: expected an object ({...}) at the top</source>
        <translation>第 1 行，第 1 列：顶层应为一个对象（{...}）</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="297"/>
        <source>not a Selvane schedule file (its &quot;format&quot; is not &quot;%1&quot;)</source>
        <translation>不是有效的节目编排文件（其 &quot;format&quot; 不是 &quot;%1&quot;）</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="327"/>
        <source>Invalid Schedule</source>
        <translation>无效的节目编排</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="330"/>
        <source>Missing Media</source>
        <translation>媒体缺失</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="350"/>
        <source>Every base clip needs an ID.</source>
        <translation>每个基础片段都需要 ID。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="352"/>
        <source>Duplicate base clip ID: %1</source>
        <translation>基础片段 ID 重复：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="355"/>
        <location filename="../schedule/ProgramArrangement.cpp" line="374"/>
        <source>End time must be later than start time.</source>
        <translation>结束时间必须晚于开始时间。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="357"/>
        <source>Select an image directory.</source>
        <translation>请选择图片目录。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="359"/>
        <source>Select a video for the channel.</source>
        <translation>请为通道选择视频。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="361"/>
        <source>Base video was not found: %1</source>
        <translation>找不到基础视频：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="364"/>
        <source>Image directory was not found: %1</source>
        <translation>找不到图片目录：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="369"/>
        <source>Every overlay clip needs an ID.</source>
        <translation>每个叠加片段都需要 ID。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="371"/>
        <source>Duplicate overlay clip ID: %1</source>
        <translation>叠加片段 ID 重复：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="376"/>
        <source>Overlay text cannot be empty.</source>
        <translation>叠加文字不能为空。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="378"/>
        <source>Overlay clip %1: its text has %2 characters; a text holds at most %3.</source>
        <translation>叠加片段 %1：文本有 %2 个字符；文本最多 %3 个字符。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="384"/>
        <source>Select an overlay image file.</source>
        <translation>请选择叠加图片文件。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="386"/>
        <source>Overlay image was not found: %1</source>
        <translation>找不到叠加图片：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="388"/>
        <source>Select an overlay video.</source>
        <translation>请选择叠加视频。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="390"/>
        <source>Overlay video was not found: %1</source>
        <translation>找不到叠加视频：%1</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="393"/>
        <source>Add at least one valid base clip.</source>
        <translation>请至少添加一个有效的基础片段。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="398"/>
        <source>Outputs entry %1: &quot;startMs&quot; and &quot;endMs&quot; are milliseconds of 0 or more.</source>
        <translation>输出条目 %1：&quot;startMs&quot; 和 &quot;endMs&quot; 是不小于 0 的毫秒数。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="402"/>
        <source>Outputs entry %1: it must stop after it starts.</source>
        <translation>输出条目 %1：停止时间必须晚于开始时间。</translation>
    </message>
    <message>
        <location filename="../schedule/ProgramArrangement.cpp" line="404"/>
        <source>Outputs entry %1 starts before entry %2 has stopped: the outputs run one stretch at a time, in order.</source>
        <translation>输出条目 %1 在条目 %2 停止之前开始：输出一次只运行一段，按顺序进行。</translation>
    </message>
</context>
<context>
    <name>selvane</name>
    <message>
        <location filename="../cli/CommandLine.cpp" line="34"/>
        <source>Selvane live video mixer. Without options the mixer window opens.</source>
        <translation>Selvane 直播视频混合器。不带选项时打开混合器窗口。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="37"/>
        <source>Run the engine without a window (no instance lock).</source>
        <translation>无窗口运行引擎（不占用单实例锁）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="39"/>
        <source>Play this program schedule (JSON) into the outputs.</source>
        <translation>将此节目编排（JSON）播出到输出。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="52"/>
        <source>When channel N fails on air (reconnecting, or no new picture for --failover-ms), show this instead: channel:M (another channel), or a file or stream address. A channel without one shows the slate. Repeatable; turns failover on.</source>
        <translation>当通道 N 在播出中故障（正在重连，或超过 --failover-ms 无新画面）时改为显示：channel:M（另一个通道），或文件、流地址。没有备份的通道显示垫片画面。可重复；同时开启故障切换。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="58"/>
        <source>The picture or clip shown for a failed channel without a backup (default: a card saying the programme will be back shortly); turns failover on.</source>
        <translation>没有备份的故障通道所显示的图片或片段（默认：提示节目马上回来的卡片）；同时开启故障切换。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="62"/>
        <source>Words over the slate.</source>
        <translation>垫片画面上的文字。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="64"/>
        <source>How long the channel on air may deliver no new picture before its backup replaces it (default 2000); turns failover on.</source>
        <translation>播出通道无新画面多长时间后由其备份替代（默认 2000）；同时开启故障切换。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="68"/>
        <source>How long a failed channel must deliver steadily before it goes back on air (default 3000).</source>
        <translation>故障通道须稳定输出多长时间才重新播出（默认 3000）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="71"/>
        <source>Run the built-in demo: test signals, a schedule, a ticker and an image overlay (no files needed).</source>
        <translation>运行内置演示：测试信号、节目编排、滚动字幕和图片叠加（无需任何文件）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="74"/>
        <source>Load a source into input channel N (1-4): a file path, a network URL, a capture address or lavfi://GRAPH. Repeatable.</source>
        <translation>为输入通道 N（1-4）加载信号源：文件路径、网络地址、采集地址或 lavfi://GRAPH。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="78"/>
        <source>Give channel N (1-4) the sound of this microphone (a PulseAudio source by name or description) instead of its own. Repeatable.</source>
        <translation>让通道 N（1-4）使用此麦克风（按名称或描述指定的 PulseAudio 源）的声音代替其自身声音。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="81"/>
        <source>Channel (1-4) that forms the program picture. Default 1.</source>
        <translation>构成节目画面的通道（1-4），默认 1。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="83"/>
        <source>Stop after this many seconds (default: until Ctrl+C).</source>
        <translation>运行指定秒数后停止（默认：直到 Ctrl+C）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="85"/>
        <source>Window: start the recording and streams of the show at once (without --headless they wait for the Start button).</source>
        <translation>窗口模式：立即开始节目的录制与推流（不加此项时等待按下“开始输出”）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="88"/>
        <source>Preview (speaker) volume of channel N, linear, e.g. 1=0.5. Repeatable.</source>
        <translation>通道 N 的预览（扬声器）音量，线性，例如 1=0.5。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="91"/>
        <source>Volume of the program channel in the program mix, linear (default 1).</source>
        <translation>节目通道在节目混音中的音量，线性（默认 1）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="94"/>
        <source>Program bus gain for recording and streaming, in percent (default 100).</source>
        <translation>录制与推流的节目总线增益，百分比（默认 100）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="97"/>
        <source>Show a scrolling ticker with these words. Repeatable.</source>
        <translation>显示滚动字幕。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="99"/>
        <source>Show a picture in the rectangle x,y,w,h of the 640x360 scene. Repeatable.</source>
        <translation>在 640x360 场景的矩形 x,y,w,h 中显示图片。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="102"/>
        <source>Play a video (looping) in the rectangle x,y,w,h of the 640x360 scene. Repeatable.</source>
        <translation>在 640x360 场景的矩形 x,y,w,h 中循环播放视频。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="110"/>
        <source>Write a second copy of the recording from the same encoded pictures: a file, or a folder (on another disk) for a file of the same name. Each copy fails and resumes on its own.</source>
        <translation>用同一编码画面写入录制的第二份副本：一个文件，或一个文件夹（位于另一磁盘）以存放同名文件。每份副本各自失败与恢复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="115"/>
        <source>Start a new recording file at a keyframe after this many minutes.</source>
        <translation>录制满指定分钟后在关键帧处开始新文件。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="119"/>
        <source>Start a new recording file at a keyframe once a file reaches this many GiB.</source>
        <translation>文件达到指定 GiB 后在关键帧处开始新文件。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="121"/>
        <source>Ring recording (with segments): delete this take&apos;s oldest segments while the recording&apos;s disk has less than this many MiB free.</source>
        <translation>循环录制（需分段）：当录制磁盘剩余空间少于此 MiB 数时，删除本次录制最早的分段。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="125"/>
        <source>Publish the program to this URL (rtmp://, rtmps://, srt://, udp:// ...); #FORMAT picks the container (flv, mpegts). Repeatable.</source>
        <translation>将节目推流到此地址（rtmp://、rtmps://、srt://、udp://……）；#FORMAT 指定封装格式（flv、mpegts）。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="130"/>
        <source>Start the outputs at this time rather than at once: a local date-time (2026-11-26T21:00[:SS]), a time of day (21:00[:SS], its next coming), or &quot;schedule&quot; (as the schedule starts).</source>
        <translation>在此时间而非立即启动输出：本地日期时间（2026-11-26T21:00[:SS]）、一天中的时间（21:00[:SS]，即下一次到来时），或 &quot;schedule&quot;（节目编排开始时）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="135"/>
        <source>Stop the outputs at this time: a date-time, a time of day, or &quot;schedule&quot; (where the schedule ends).</source>
        <translation>在此时间停止输出：日期时间、一天中的时间，或 &quot;schedule&quot;（节目编排结束处）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="139"/>
        <source>Output size, e.g. 1280x720 (default: same as the program).</source>
        <translation>输出尺寸，例如 1280x720（默认：与节目相同）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="140"/>
        <source>Output frame rate: 30 or 60 (default 30).</source>
        <translation>输出帧率：30 或 60（默认 30）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="141"/>
        <source>Video bitrate in kbit/s (default: automatic).</source>
        <translation>视频码率，kbit/s（默认：自动）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="143"/>
        <source>Video encoder: auto, hardware or software (default auto).</source>
        <translation>视频编码器：auto、hardware 或 software（默认 auto）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="145"/>
        <source>Quality preset: performance, balanced or quality (default balanced).</source>
        <translation>质量预设：performance、balanced 或 quality（默认 balanced）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="148"/>
        <source>Serve the remote control API (HTTP and WebSocket) on this port.</source>
        <translation>在此端口上提供远程控制 API（HTTP 和 WebSocket）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="151"/>
        <source>Address the remote control listens on (default 127.0.0.1).</source>
        <translation>远程控制监听的地址（默认 127.0.0.1）。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="239"/>
        <source>--record expects a file path</source>
        <translation>--record 需要文件路径</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="246"/>
        <source>--twin expects a file or a folder, beside --record</source>
        <translation>--twin 需要一个文件或文件夹，并须同时使用 --record</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="260"/>
        <source>--%1 expects a positive number, got &quot;%2&quot;</source>
        <translation>--%1 需要正数，收到 &quot;%2&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="271"/>
        <source>segment limits need --record</source>
        <translation>分段限制需要 --record</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="282"/>
        <source>--%1 expects a date-time (2026-11-26T21:00), a time of day (21:00) or &quot;schedule&quot;, got &quot;%2&quot;</source>
        <translation>--%1 需要日期时间（2026-11-26T21:00）、一天中的时间（21:00）或 &quot;schedule&quot;，收到 &quot;%2&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="294"/>
        <source>--keep-free deletes old segments: it needs --segment-minutes or --segment-gib</source>
        <translation>--keep-free 会删除旧分段：需要 --segment-minutes 或 --segment-gib</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="319"/>
        <source>--size expects an even width and height, got &quot;%1&quot;</source>
        <translation>--size 的宽和高必须是偶数，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="423"/>
        <source>--control-port expects a port from 1 to 65535, got &quot;%1&quot;</source>
        <translation>--control-port 需要 1 到 65535 之间的端口，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="432"/>
        <source>--control-bind expects an IP address such as 127.0.0.1 or ::1, got &quot;%1&quot;</source>
        <translation>--control-bind 需要 IP 地址（如 127.0.0.1 或 ::1），收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="460"/>
        <source>overlay &quot;%1&quot;: &quot;%2&quot; is not a file that can be read</source>
        <translation>叠加 &quot;%1&quot;：&quot;%2&quot; 不是可读取的文件</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="41"/>
        <source>Validate a program schedule and print it in the current format; with --channel options, warn of clips whose channel has no source.</source>
        <translation>校验节目编排并以当前格式输出；配合 --channel 选项时，对通道没有信号源的片段给出警告。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="45"/>
        <source>How the schedule&apos;s channel clips without a transition of their own come on air: cut, mix, wipe or dip, with :MS for its length (default 1000), e.g. mix:500; or stinger:FILE, a clip with alpha played over the switch, with @MS for where the switch happens (default: its middle), e.g. stinger:logo.mov@400. Default: cut.</source>
        <translation>节目单中没有指定转场的通道片段如何上播：cut、mix、wipe 或 dip，可加 :MS 指定时长（默认 1000），例如 mix:500；或 stinger:FILE，在切换时叠加播放一段带透明通道的片段，可加 @MS 指定切换发生的位置（默认：片段中点），例如 stinger:logo.mov@400。默认：cut。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="107"/>
        <source>Record the program to this file (MP4, MKV, MOV, TS ...); NAME= picks a profile.</source>
        <translation>将节目录制到此文件（MP4、MKV、MOV、TS ……）；NAME= 选择配置。</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="313"/>
        <source>--size expects WIDTHxHEIGHT, got &quot;%1&quot;</source>
        <translation>--size 需要 宽x高，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="327"/>
        <source>--fps expects 30 or 60, got &quot;%1&quot;</source>
        <translation>--fps 需要 30 或 60，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="336"/>
        <source>--bitrate expects kbit/s from 100 to 400000, got &quot;%1&quot;</source>
        <translation>--bitrate 需要 100 到 400000 之间的 kbit/s，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="345"/>
        <source>--encoder expects auto, hardware or software, got &quot;%1&quot;</source>
        <translation>--encoder 需要 auto、hardware 或 software，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="355"/>
        <source>--preset expects performance, balanced or quality, got &quot;%1&quot;</source>
        <translation>--preset 需要 performance、balanced 或 quality，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="390"/>
        <source>--volume expects N=V with N from 1 to 4 and V from 0 to 4, got &quot;%1&quot;</source>
        <translation>--volume 需要 N=V（N 为 1 到 4，V 为 0 到 4），收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="400"/>
        <source>--program-volume expects a number from 0 to 4, got &quot;%1&quot;</source>
        <translation>--program-volume 需要 0 到 4 之间的数，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="409"/>
        <source>--gain expects a percentage from 0 to 1000, got &quot;%1&quot;</source>
        <translation>--gain 需要 0 到 1000 之间的百分比，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="468"/>
        <source>at most %1 image and video overlays</source>
        <translation>图片与视频叠加最多 %1 个</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="483"/>
        <source>--backup expects N=ADDRESS or N=channel:M with N from 1 to 4, got &quot;%1&quot;</source>
        <translation>--backup 需要 N=地址 或 N=channel:M，N 为 1 到 4，实际为 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="505"/>
        <source>--%1 expects milliseconds from 100 to 3600000, got &quot;%2&quot;</source>
        <translation>--%1 需要 100 到 3600000 之间的毫秒数，实际为 &quot;%2&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="530"/>
        <source>--channel expects N=ADDRESS with N from 1 to 4, got &quot;%1&quot;</source>
        <translation>--channel 需要 N=地址（N 为 1 到 4），收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="541"/>
        <source>--microphone expects N=NAME with N from 1 to 4, got &quot;%1&quot;</source>
        <translation>--microphone 需要 N=名称，N 为 1 到 4，收到的是“%1”</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="552"/>
        <source>--base expects a channel from 1 to 4, got &quot;%1&quot;</source>
        <translation>--base 需要 1 到 4 的通道，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="561"/>
        <source>--duration expects a positive number of seconds, got &quot;%1&quot;</source>
        <translation>--duration 需要正的秒数，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="576"/>
        <source>--transition: %1, got &quot;%2&quot;</source>
        <translation>--transition：%1，收到的是“%2”</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="585"/>
        <source>--demo brings its own schedule; leave out --schedule</source>
        <translation>--demo 自带节目编排；请去掉 --schedule</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="598"/>
        <source>--headless needs at least one --channel</source>
        <translation>--headless 至少需要一个 --channel</translation>
    </message>
    <message>
        <location filename="../cli/CommandLine.cpp" line="602"/>
        <source>the base channel %1 has no source</source>
        <translation>基础通道 %1 没有信号源</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="55"/>
        <source>the text overlay needs some words, got &quot;%1&quot;</source>
        <translation>文字叠加需要内容，收到 &quot;%1&quot;</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="59"/>
        <source>the text overlay takes at most %1 characters, got %2</source>
        <translation>文字叠加最多 %1 个字符，实际为 %2</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="73"/>
        <source>overlay &quot;%1&quot;: expected PATH@x,y,w,h (a rectangle in the 640x360 scene)</source>
        <translation>叠加 &quot;%1&quot;：需要 路径@x,y,w,h（640x360 场景中的矩形）</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="79"/>
        <source>overlay &quot;%1&quot;: the path before &apos;@&apos; is empty</source>
        <translation>叠加 &quot;%1&quot;：&apos;@&apos; 前的路径为空</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="84"/>
        <source>overlay &quot;%1&quot;: expected four numbers x,y,w,h after &apos;@&apos;</source>
        <translation>叠加 &quot;%1&quot;：&apos;@&apos; 后需要四个数 x,y,w,h</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="92"/>
        <source>overlay &quot;%1&quot;: &quot;%2&quot; is not a number</source>
        <translation>叠加 &quot;%1&quot;：&quot;%2&quot; 不是数字</translation>
    </message>
    <message>
        <location filename="../cli/OverlaySpecs.cpp" line="97"/>
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
        <source>Screen and window capture need an X11 display, and this session has none (on Wayland, run Selvane under XWayland).</source>
        <translation>屏幕和窗口采集需要 X11 显示，而当前会话没有（在 Wayland 下请通过 XWayland 运行 Selvane）。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="52"/>
        <source>Invalid monitor index.</source>
        <translation>无效的显示器索引</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="54"/>
        <source>wgc:// needs a valid hwnd parameter (decimal or 0x hexadecimal).</source>
        <translation>wgc:// 需要有效 hwnd 参数（十进制或 0x 十六进制）</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="56"/>
        <source>The captured window was closed.</source>
        <translation>被采集的窗口已关闭。</translation>
    </message>
    <message>
        <location filename="../app/OperatorTexts.cpp" line="58"/>
        <source>The source stopped delivering.</source>
        <translation>信号源已中断。</translation>
    </message>
    <message>
        <location filename="../show/ShowLoader.cpp" line="15"/>
        <source>Unable to open the file. %1</source>
        <translation>无法打开文件。%1</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="38"/>
        <source>Define an encode profile: its name (letters, digits, - and _), size, frame rate, kbit/s and preset (performance, balanced, quality). &quot;--stream NAME=URL&quot;, &quot;--record NAME=PATH&quot; and &quot;--iso NAME=N&quot; use it; without NAME= they use the default profile (--size, --fps, --bitrate). Repeatable.</source>
        <translation>定义一个编码配置：名称（字母、数字、- 和 _）、尺寸、帧率、kbit/s 和预设（performance、balanced、quality）。“--stream NAME=URL”、“--record NAME=PATH”和“--iso NAME=N”使用它；不带 NAME= 时使用默认配置（--size、--fps、--bitrate）。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="45"/>
        <source>The profile&apos;s bitrate steps down while one of its targets is congested (to FLOOR percent of its bitrate at least, default 30) and back up once they keep up. NAME may be &quot;default&quot;. Repeatable.</source>
        <translation>当配置的某个目标拥塞时，其码率逐步降低（最低到码率的 FLOOR 百分比，默认 30），跟上后再恢复。NAME 可以是“default”。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="50"/>
        <source>The profile shows the multiview (preview, program and the four channels, labelled) instead of the program. Repeatable.</source>
        <translation>该配置输出多画面（预览、节目和四个通道，带标注）而不是节目。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="54"/>
        <source>Record channel N on its own beside the program recording, as decoded and with its own sound, from the same instant (file &quot;&lt;recording&gt;_isoN.&lt;ext&gt;&quot;). Repeatable.</source>
        <translation>在节目录制旁边单独录制通道 N，按解码所得画面并带其自身声音，从同一时刻开始（文件“&lt;录制&gt;_isoN.&lt;扩展名&gt;”）。可重复。</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="59"/>
        <source>Length of an HLS target&apos;s segments in seconds, 1 to 6 (default 2). An HLS target is a path to its playlist: --stream live/index.m3u8.</source>
        <translation>HLS 目标的分片时长（秒），1 到 6（默认 2）。HLS 目标是其播放列表的路径：--stream live/index.m3u8。</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="63"/>
        <source>How many segments an HLS playlist names, 2 to 60 (default 6); older ones are deleted.</source>
        <translation>HLS 播放列表包含的分片数，2 到 60（默认 6）；更早的分片会被删除。</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="78"/>
        <source>--profile: &quot;%1&quot; is defined twice</source>
        <translation>--profile：“%1”被定义了两次</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="84"/>
        <source>--%1: there is no profile named &quot;%2&quot; (define it with --profile)</source>
        <translation>--%1：没有名为“%2”的配置（请用 --profile 定义）</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="94"/>
        <source>--adaptive expects NAME[:FLOOR] with FLOOR from 5 to 100, got &quot;%1&quot;</source>
        <translation>--adaptive 需要 NAME[:FLOOR]，FLOOR 为 5 到 100，实际为“%1”</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="133"/>
        <source>--iso expects a channel from 1 to 4, got &quot;%1&quot;</source>
        <translation>--iso 需要 1 到 4 的通道，实际为“%1”</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="139"/>
        <source>--iso records beside the program: it needs --record</source>
        <translation>--iso 录制在节目录制旁边：需要 --record</translation>
    </message>
    <message>
        <location filename="../cli/ProfileOptions.cpp" line="152"/>
        <source>--%1 expects a whole number from %2 to %3, got &quot;%4&quot;</source>
        <translation>--%1 需要 %2 到 %3 之间的整数，实际为“%4”</translation>
    </message>
</context>
<context>
    <name>selvane::AudioMixerPanel</name>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="188"/>
        <source>%1 dB</source>
        <translation>%1 dB</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="236"/>
        <location filename="../panels/AudioMixerPanel.cpp" line="295"/>
        <source>System default</source>
        <translation>系统默认</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="247"/>
        <source>Channel %1</source>
        <translation>通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="250"/>
        <source>Program</source>
        <translation>节目</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="253"/>
        <source>Overlay %1</source>
        <translation>叠加 %1</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="263"/>
        <source>Channel %1 volume</source>
        <translation>通道 %1 音量</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="264"/>
        <source>Channel %1 mute</source>
        <translation>通道 %1 静音</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="267"/>
        <source>Program volume</source>
        <translation>节目音量</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="268"/>
        <source>Program mute</source>
        <translation>节目静音</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="271"/>
        <source>%1 volume</source>
        <translation>%1 音量</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="272"/>
        <source>%1 mute</source>
        <translation>%1 静音</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="273"/>
        <source>On program</source>
        <translation>进节目</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="274"/>
        <source>%1 on program</source>
        <translation>%1 进节目</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="276"/>
        <source>Mute</source>
        <translation>静音</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="278"/>
        <source>What you hear of this channel (the program has its own level)</source>
        <translation>监听中此通道的音量（节目有自己的电平）</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="290"/>
        <source>Preview output:</source>
        <translation>监听输出：</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="291"/>
        <source>Preview output device</source>
        <translation>监听输出设备</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="292"/>
        <source>Refresh</source>
        <translation>刷新</translation>
    </message>
    <message>
        <location filename="../panels/AudioMixerPanel.cpp" line="293"/>
        <source>Refresh output devices</source>
        <translation>刷新输出设备</translation>
    </message>
</context>
<context>
    <name>selvane::BaseClipDialog</name>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="226"/>
        <source>Choose the Image Directory</source>
        <translation>选择图片目录</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="234"/>
        <source>Choose the Video</source>
        <translation>选择视频</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="235"/>
        <source>Videos (*.mp4 *.mov *.mkv *.avi *.flv *.ts *.webm);;All files (*)</source>
        <translation>视频 (*.mp4 *.mov *.mkv *.avi *.flv *.ts *.webm);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="249"/>
        <source>Base Clip</source>
        <translation>基础片段</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="250"/>
        <source>ID:</source>
        <translation>ID：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="251"/>
        <source>Clip ID</source>
        <translation>片段 ID</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="252"/>
        <source>Source:</source>
        <translation>来源：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="253"/>
        <source>Source</source>
        <translation>来源</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="255"/>
        <source>Channel %1</source>
        <translation>通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="256"/>
        <source>Image playback</source>
        <translation>图片播放</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="257"/>
        <source>Video</source>
        <translation>视频</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="258"/>
        <source>Image directory:</source>
        <translation>图片目录：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="259"/>
        <source>Image directory</source>
        <translation>图片目录</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="260"/>
        <location filename="../panels/ClipDialogs.cpp" line="268"/>
        <source>Browse...</source>
        <translation>浏览...</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="261"/>
        <source>Browse for the image directory</source>
        <translation>浏览图片目录</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="262"/>
        <source>Interval:</source>
        <translation>间隔：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="263"/>
        <source>Image interval</source>
        <translation>图片间隔</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="264"/>
        <location filename="../panels/ClipDialogs.cpp" line="265"/>
        <source>Loop the images</source>
        <translation>循环播放图片</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="266"/>
        <source>Video file:</source>
        <translation>视频文件：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="267"/>
        <source>Video file</source>
        <translation>视频文件</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="269"/>
        <source>Browse for the video</source>
        <translation>浏览视频</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="270"/>
        <location filename="../panels/ClipDialogs.cpp" line="271"/>
        <source>Loop the video</source>
        <translation>循环播放视频</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="273"/>
        <location filename="../panels/ClipDialogs.cpp" line="274"/>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="275"/>
        <location filename="../panels/ClipDialogs.cpp" line="276"/>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>selvane::BaseRowsModel</name>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="52"/>
        <source>Source</source>
        <translation>来源</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="59"/>
        <source>Image playback</source>
        <translation>图片播放</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="61"/>
        <source>Video</source>
        <translation>视频</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="63"/>
        <source>Channel %1</source>
        <translation>通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="72"/>
        <source>%1 (%2 images, %3 ms each%4)</source>
        <translation>%1（%2 张图片，每张 %3 毫秒%4）</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="76"/>
        <source>, looping</source>
        <translation>，循环</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="79"/>
        <source> (looping)</source>
        <translation>（循环）</translation>
    </message>
</context>
<context>
    <name>selvane::ChannelPanel</name>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="208"/>
        <location filename="../panels/ChannelPanel.cpp" line="357"/>
        <source>(no source)</source>
        <translation>（无源）</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="231"/>
        <source>LIVE</source>
        <translation>直播</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="252"/>
        <source>Backup of channel %1</source>
        <translation>通道 %1 的备份</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="253"/>
        <source>No backup (the slate)</source>
        <translation>无备份（垫片画面）</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="256"/>
        <source>Channel %1</source>
        <translation>通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="260"/>
        <source>File…</source>
        <translation>文件…</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="261"/>
        <source>Address…</source>
        <translation>地址…</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="268"/>
        <location filename="../panels/ChannelPanel.cpp" line="281"/>
        <source>channel %1</source>
        <translation>通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="269"/>
        <source>slate</source>
        <translation>垫片画面</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="271"/>
        <source>Backup: %1</source>
        <translation>备份：%1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="274"/>
        <source>When channel %1 fails on air, the slate stands in</source>
        <translation>通道 %1 播出故障时，由垫片画面替代</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="275"/>
        <source>When channel %1 fails on air, %2 stands in</source>
        <translation>通道 %1 播出故障时，由 %2 替代</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="282"/>
        <source>its backup</source>
        <translation>其备份</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="282"/>
        <source>the slate</source>
        <translation>垫片画面</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="288"/>
        <source>failed on air: %1 stands in</source>
        <translation>播出故障：由%1替代</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="291"/>
        <source>idle</source>
        <translation>空闲</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="293"/>
        <source>connecting</source>
        <translation>连接中</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="295"/>
        <source>live</source>
        <translation>直播中</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="295"/>
        <source>playing</source>
        <translation>播放中</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="297"/>
        <source>paused</source>
        <translation>已暂停</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="299"/>
        <source>ended</source>
        <translation>已结束</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="301"/>
        <source>error</source>
        <translation>错误</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="301"/>
        <source>error: %1</source>
        <translation>错误：%1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="303"/>
        <source>reconnecting</source>
        <translation>重连中</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="303"/>
        <source>reconnecting: %1</source>
        <translation>重连中：%1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="317"/>
        <source>Channel %1 state</source>
        <translation>通道 %1 状态</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="341"/>
        <source>&lt;b&gt;%1&lt;/b&gt;  PROGRAM</source>
        <translation>&lt;b&gt;%1&lt;/b&gt;  节目</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="341"/>
        <source>&lt;b&gt;%1&lt;/b&gt;</source>
        <translation>&lt;b&gt;%1&lt;/b&gt;</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="342"/>
        <source>Source…</source>
        <translation>选择源…</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="343"/>
        <source>Choose what channel %1 plays</source>
        <translation>选择通道 %1 播放的内容</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="344"/>
        <source>Clear</source>
        <translation>清除</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="345"/>
        <source>Take</source>
        <translation>切入</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="346"/>
        <source>Put channel %1 on the program (key %1)</source>
        <translation>将通道 %1 切入节目（按键 %1）</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="347"/>
        <source>Pause</source>
        <translation>暂停</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="348"/>
        <source>Pause channel %1</source>
        <translation>暂停通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="349"/>
        <source>Loop</source>
        <translation>循环</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="350"/>
        <source>Loop channel %1</source>
        <translation>循环通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="351"/>
        <source>Channel %1 position</source>
        <translation>通道 %1 播放位置</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="352"/>
        <source>Channel %1 time</source>
        <translation>通道 %1 时间</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="353"/>
        <source>Channel %1 source</source>
        <translation>通道 %1 源</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="354"/>
        <source>Channel %1 picture</source>
        <translation>通道 %1 画面</translation>
    </message>
    <message>
        <location filename="../panels/ChannelPanel.cpp" line="355"/>
        <source>Channel %1 title</source>
        <translation>通道 %1 标题</translation>
    </message>
</context>
<context>
    <name>selvane::ClipTimesEditor</name>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="102"/>
        <source>Start:</source>
        <translation>开始：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="103"/>
        <source>End:</source>
        <translation>结束：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="104"/>
        <source>Start time</source>
        <translation>开始时间</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="105"/>
        <source>End time</source>
        <translation>结束时间</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="106"/>
        <source>Open-ended</source>
        <translation>无结束时间</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="107"/>
        <source>Open-ended: the clip runs until the next one takes over.</source>
        <translation>无结束时间：片段一直播放，直到下一个片段接替。</translation>
    </message>
</context>
<context>
    <name>selvane::DrawingToolBar</name>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="133"/>
        <source>Pen Colour</source>
        <translation>画笔颜色</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="189"/>
        <source>Stroke</source>
        <translation>笔画</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="199"/>
        <source>Erase</source>
        <translation>擦除</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="227"/>
        <location filename="../panels/DrawingToolBar.cpp" line="228"/>
        <source>Drawing Tools</source>
        <translation>涂鸦工具</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="229"/>
        <source>Pen</source>
        <translation>画笔</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="230"/>
        <source>Draw on the program preview</source>
        <translation>在节目预览上绘制</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="231"/>
        <source>Eraser</source>
        <translation>橡皮擦</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="232"/>
        <source>Remove strokes by touching them on the program preview</source>
        <translation>在节目预览上触碰笔画即可删除</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="233"/>
        <location filename="../panels/DrawingToolBar.cpp" line="234"/>
        <source>Pen colour</source>
        <translation>画笔颜色</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="235"/>
        <source>Width:</source>
        <translation>宽度：</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="236"/>
        <source>Pen width</source>
        <translation>画笔宽度</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="237"/>
        <source>Pen width in scene units (the scene is 640 x 360)</source>
        <translation>画笔宽度，以场景单位计（场景为 640 x 360）</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="238"/>
        <source>Undo the last change of the drawing</source>
        <translation>撤销涂鸦的上一次修改</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="239"/>
        <source>Redo the change undone last</source>
        <translation>重做刚撤销的修改</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="249"/>
        <source>Undo</source>
        <translation>撤销</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="251"/>
        <source>Redo</source>
        <translation>重做</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="205"/>
        <location filename="../panels/DrawingToolBar.cpp" line="240"/>
        <source>Clear Drawing</source>
        <translation>清除涂鸦</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="241"/>
        <source>Show on Program</source>
        <translation>在节目上显示</translation>
    </message>
    <message>
        <location filename="../panels/DrawingToolBar.cpp" line="242"/>
        <source>Show the drawing on the program and in the outputs</source>
        <translation>在节目和输出中显示涂鸦</translation>
    </message>
</context>
<context>
    <name>selvane::EncodeProfileDialog</name>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="29"/>
        <source>Encode profile</source>
        <translation>编码配置</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="32"/>
        <source>e.g. low, mobile_720</source>
        <translation>例如 low、mobile_720</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="42"/>
        <source>program&apos;s</source>
        <translation>同节目</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="50"/>
        <location filename="../panels/EncodeProfileDialog.cpp" line="53"/>
        <source>%1 fps</source>
        <translation>%1 帧/秒</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="50"/>
        <source>The program&apos;s</source>
        <translation>同节目</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="59"/>
        <source> kbit/s</source>
        <translation> kbit/s</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="60"/>
        <source>Automatic</source>
        <translation>自动</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="64"/>
        <source>Performance</source>
        <translation>性能</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="64"/>
        <source>Balanced</source>
        <translation>均衡</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="64"/>
        <source>Quality</source>
        <translation>质量</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="66"/>
        <source>Adaptive bitrate</source>
        <translation>自适应码率</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="68"/>
        <source>The bitrate steps down while a target of this profile is congested, and back up once it keeps up</source>
        <translation>当此配置的目标拥塞时码率逐步降低，跟上后再恢复</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="75"/>
        <source>down to </source>
        <translation>最低 </translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="79"/>
        <source>Shows the multiview</source>
        <translation>输出多画面</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="81"/>
        <source>Its outputs show the multiview (preview, program and the four channels) instead of the program</source>
        <translation>其输出显示多画面（预览、节目和四个通道）而不是节目</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="98"/>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="100"/>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="103"/>
        <source>Name:</source>
        <translation>名称：</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="104"/>
        <source>Size:</source>
        <translation>尺寸：</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="105"/>
        <source>Frame rate:</source>
        <translation>帧率：</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="106"/>
        <source>Bitrate:</source>
        <translation>码率：</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="107"/>
        <source>Preset:</source>
        <translation>预设：</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="137"/>
        <source>Give the profile a name.</source>
        <translation>请为配置命名。</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="139"/>
        <source>&quot;default&quot; is the Encoding settings: choose another name.</source>
        <translation>“default”就是编码设置：请换一个名称。</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfileDialog.cpp" line="141"/>
        <source>Set both the width and the height, or neither for the program&apos;s size.</source>
        <translation>请同时设置宽度和高度，或都不设置以使用节目尺寸。</translation>
    </message>
</context>
<context>
    <name>selvane::EncodeProfilesBox</name>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="146"/>
        <source>default</source>
        <translation>默认</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="150"/>
        <source>%1 (missing)</source>
        <translation>%1（不存在）</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="212"/>
        <source>Performance</source>
        <translation>性能</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="212"/>
        <source>Balanced</source>
        <translation>均衡</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="212"/>
        <source>Quality</source>
        <translation>质量</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="218"/>
        <source>program&apos;s size</source>
        <translation>同节目尺寸</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="219"/>
        <source>%1 fps</source>
        <translation>%1 帧/秒</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="219"/>
        <source>program&apos;s rate</source>
        <translation>同节目帧率</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="220"/>
        <source>%1 kbit/s</source>
        <translation>%1 kbit/s</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="221"/>
        <source>automatic bitrate</source>
        <translation>自动码率</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="223"/>
        <source>adaptive down to %1 %</source>
        <translation>自适应，最低 %1 %</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="224"/>
        <source>fixed bitrate</source>
        <translation>固定码率</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="226"/>
        <source>shows the multiview</source>
        <translation>输出多画面</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="273"/>
        <source>Encode profiles</source>
        <translation>编码配置</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="274"/>
        <source>Adaptive bitrate</source>
        <translation>自适应码率</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="275"/>
        <source>The default profile&apos;s bitrate steps down while a target is congested, and back up once it keeps up</source>
        <translation>当目标拥塞时默认配置的码率逐步降低，跟上后再恢复</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="277"/>
        <source>down to </source>
        <translation>最低 </translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="278"/>
        <source>Name</source>
        <translation>名称</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="278"/>
        <source>Picture</source>
        <translation>画面</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="278"/>
        <source>Encoding</source>
        <translation>编码</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="279"/>
        <source>Add…</source>
        <translation>添加…</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="280"/>
        <source>Edit…</source>
        <translation>编辑…</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="281"/>
        <source>Remove</source>
        <translation>删除</translation>
    </message>
    <message>
        <location filename="../panels/EncodeProfilesBox.cpp" line="282"/>
        <source>The Encoding settings above are the &quot;default&quot; profile. Each profile named by the recording or a target is encoded once, with the encoder and keyframe interval chosen above.</source>
        <translation>上面的编码设置即“default”（默认）配置。录制或目标所用的每个配置只编码一次，并使用上面选择的编码器和关键帧间隔。</translation>
    </message>
</context>
<context>
    <name>selvane::Engine</name>
    <message>
        <location filename="../engine/Engine.cpp" line="738"/>
        <source>Invalid Schedule</source>
        <translation>无效的节目编排</translation>
    </message>
    <message>
        <location filename="../engine/Engine.cpp" line="738"/>
        <source>&quot;failover&quot;: %1</source>
        <translation>&quot;failover&quot;：%1</translation>
    </message>
</context>
<context>
    <name>selvane::FailoverBox</name>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="88"/>
        <source>Choose the Slate</source>
        <translation>选择垫片画面</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="89"/>
        <source>Pictures and clips (*.png *.jpg *.jpeg *.bmp *.webp *.mp4 *.mov *.mkv *.webm);;All files (*)</source>
        <translation>图片和片段 (*.png *.jpg *.jpeg *.bmp *.webp *.mp4 *.mov *.mkv *.webm);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="106"/>
        <source>Failover</source>
        <translation>故障切换</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="107"/>
        <source>When the channel on air fails, show its backup</source>
        <translation>播出通道故障时显示其备份</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="108"/>
        <source>Slate</source>
        <translation>垫片</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="109"/>
        <source>Built-in card</source>
        <translation>内置卡片</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="110"/>
        <source>Shown for a failed channel without a backup</source>
        <translation>没有备份的故障通道显示此画面</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="111"/>
        <source>Slate text</source>
        <translation>垫片文字</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="112"/>
        <source>The programme will be back shortly</source>
        <translation>节目马上回来</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="113"/>
        <source>Fail over after</source>
        <translation>故障切换延迟</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="114"/>
        <source>How long the channel on air may show no new picture</source>
        <translation>播出通道可无新画面的时长</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="115"/>
        <source>Return after</source>
        <translation>恢复延迟</translation>
    </message>
    <message>
        <location filename="../panels/FailoverBox.cpp" line="116"/>
        <source>How long a failed channel must play steadily to come back</source>
        <translation>故障通道须稳定播放多长时间才恢复播出</translation>
    </message>
</context>
<context>
    <name>selvane::FailoverDesk</name>
    <message>
        <location filename="../app/FailoverDesk.cpp" line="54"/>
        <source>Channel %1 failed on air; %2 stands in</source>
        <translation>通道 %1 播出故障；由%2替代</translation>
    </message>
    <message>
        <location filename="../app/FailoverDesk.cpp" line="61"/>
        <source>Channel %1 is back on air</source>
        <translation>通道 %1 已恢复播出</translation>
    </message>
    <message>
        <location filename="../app/FailoverDesk.cpp" line="70"/>
        <source>Failover</source>
        <translation>故障切换</translation>
    </message>
    <message>
        <location filename="../app/FailoverDesk.cpp" line="87"/>
        <location filename="../app/FailoverDesk.cpp" line="93"/>
        <source>Backup of Channel %1</source>
        <translation>通道 %1 的备份</translation>
    </message>
    <message>
        <location filename="../app/FailoverDesk.cpp" line="89"/>
        <source>Clips and pictures (*.mp4 *.mov *.mkv *.webm *.ts *.png *.jpg *.jpeg);;All files (*)</source>
        <translation>片段和图片 (*.mp4 *.mov *.mkv *.webm *.ts *.png *.jpg *.jpeg);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../app/FailoverDesk.cpp" line="94"/>
        <source>A stream address (rtmp://, srt://, https:// …)</source>
        <translation>流地址（rtmp://、srt://、https:// …）</translation>
    </message>
</context>
<context>
    <name>selvane::ImagePlaybackPanel</name>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="84"/>
        <source>Choose an Image Folder</source>
        <translation>选择图片文件夹</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="93"/>
        <source>Choose Images</source>
        <translation>选择图片</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="94"/>
        <source>Images (*.png *.jpg *.jpeg *.bmp *.webp);;All files (*)</source>
        <translation>图片 (*.png *.jpg *.jpeg *.bmp *.webp);;所有文件 (*)</translation>
    </message>
    <message numerus="yes">
        <location filename="../panels/ImagePlaybackPanel.cpp" line="194"/>
        <source>%n image(s), not on air</source>
        <translation>
            <numerusform>%n 张图片，未播出</numerusform>
        </translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="199"/>
        <source>On air: image %1 of %2</source>
        <translation>播出中：第 %1 张，共 %2 张</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="212"/>
        <source>Still images as the program picture, one after another.</source>
        <translation>依次将静态图片作为节目画面。</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="213"/>
        <source>Slides</source>
        <translation>图片列表</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="214"/>
        <source>Choose Folder...</source>
        <translation>选择文件夹...</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="215"/>
        <source>Choose Folder</source>
        <translation>选择文件夹</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="216"/>
        <source>Add Images...</source>
        <translation>添加图片...</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="217"/>
        <source>Add Images</source>
        <translation>添加图片</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="218"/>
        <source>Remove</source>
        <translation>删除</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="219"/>
        <source>Remove Images</source>
        <translation>删除图片</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="220"/>
        <source>Clear</source>
        <translation>清除</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="221"/>
        <source>Clear Images</source>
        <translation>清空图片</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="222"/>
        <source>Each image:</source>
        <translation>每张图片：</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="223"/>
        <source> s</source>
        <translation> 秒</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="224"/>
        <source>Slide interval</source>
        <translation>图片间隔</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="225"/>
        <source>Loop</source>
        <translation>循环</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="226"/>
        <source>Loop slides</source>
        <translation>循环播放图片</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="227"/>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="228"/>
        <source>Start Slides</source>
        <translation>开始播放图片</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="229"/>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="230"/>
        <source>Stop Slides</source>
        <translation>停止播放图片</translation>
    </message>
    <message>
        <location filename="../panels/ImagePlaybackPanel.cpp" line="231"/>
        <source>Slide status</source>
        <translation>图片播放状态</translation>
    </message>
</context>
<context>
    <name>selvane::MediaOverlayPanel</name>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="262"/>
        <source>Images (*.png *.jpg *.jpeg *.bmp *.webp *.gif);;All files (*)</source>
        <translation>图片 (*.png *.jpg *.jpeg *.bmp *.webp *.gif);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="263"/>
        <source>Videos (*.mp4 *.mov *.mkv *.avi *.webm *.ts *.flv *.m4v);;All files (*)</source>
        <translation>视频 (*.mp4 *.mov *.mkv *.avi *.webm *.ts *.flv *.m4v);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="265"/>
        <source>Choose an Image</source>
        <translation>选择图片</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="265"/>
        <source>Choose a Video</source>
        <translation>选择视频</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="280"/>
        <source>Choose a File</source>
        <translation>选择文件</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="280"/>
        <source>All files (*)</source>
        <translation>所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="299"/>
        <source>Video Overlay</source>
        <translation>视频叠加</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="314"/>
        <source>Pictures and videos over the program (at most %1).</source>
        <translation>叠加在节目上的图片和视频（最多 %1 个）。</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="316"/>
        <source>Media overlays</source>
        <translation>媒体叠加</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="317"/>
        <source>Add Image...</source>
        <translation>添加图片...</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="318"/>
        <source>Add Image</source>
        <translation>添加图片</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="319"/>
        <source>Add Video...</source>
        <translation>添加视频...</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="320"/>
        <source>Add Video</source>
        <translation>添加视频</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="321"/>
        <source>Remove</source>
        <translation>删除</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="322"/>
        <source>Remove Overlay</source>
        <translation>删除叠加</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="323"/>
        <source>File...</source>
        <translation>文件...</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="324"/>
        <source>Overlay file</source>
        <translation>叠加文件</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="325"/>
        <source>X</source>
        <translation>X</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="326"/>
        <source>Y</source>
        <translation>Y</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="327"/>
        <source>Width</source>
        <translation>宽度</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="328"/>
        <source>Height</source>
        <translation>高度</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="329"/>
        <source>Opacity</source>
        <translation>不透明度</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="336"/>
        <source>File:</source>
        <translation>文件：</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="337"/>
        <source>Position:</source>
        <translation>位置：</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="338"/>
        <source>Size:</source>
        <translation>大小：</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="339"/>
        <source>Opacity:</source>
        <translation>不透明度：</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="340"/>
        <source>X </source>
        <translation>X </translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="341"/>
        <source>Y </source>
        <translation>Y </translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="342"/>
        <source>W </source>
        <translation>宽 </translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="343"/>
        <source>H </source>
        <translation>高 </translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="344"/>
        <location filename="../panels/MediaOverlayPanel.cpp" line="345"/>
        <source>Visible</source>
        <translation>可见</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="346"/>
        <source>Loop</source>
        <translation>循环</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="347"/>
        <source>Loop video</source>
        <translation>循环播放视频</translation>
    </message>
    <message>
        <location filename="../panels/MediaOverlayPanel.cpp" line="348"/>
        <source>Places are in the 640 x 360 scene, whatever the output size. Drag the chosen overlay&apos;s frame on the program preview to move it; pull a corner or an edge to resize it. A video&apos;s sound is set on its strip in the audio mixer.</source>
        <translation>位置以 640 x 360 场景为准，与输出分辨率无关。在节目预览上拖动所选叠加的边框可移动它；拖动角或边可调整大小。视频的声音在混音器中它的通道条上调节。</translation>
    </message>
</context>
<context>
    <name>selvane::MultiviewWindow</name>
    <message>
        <location filename="../panels/MultiviewWindow.cpp" line="39"/>
        <location filename="../panels/MultiviewWindow.cpp" line="45"/>
        <source>Multiview</source>
        <translation>多画面监看</translation>
    </message>
    <message>
        <location filename="../panels/MultiviewWindow.cpp" line="139"/>
        <source>PREVIEW  %1</source>
        <translation>预监  %1</translation>
    </message>
    <message>
        <location filename="../panels/MultiviewWindow.cpp" line="139"/>
        <source>PREVIEW</source>
        <translation>预监</translation>
    </message>
    <message>
        <location filename="../panels/MultiviewWindow.cpp" line="141"/>
        <source>PROGRAM  %1</source>
        <translation>节目  %1</translation>
    </message>
    <message>
        <location filename="../panels/MultiviewWindow.cpp" line="141"/>
        <source>PROGRAM</source>
        <translation>节目</translation>
    </message>
    <message>
        <location filename="../panels/MultiviewWindow.cpp" line="146"/>
        <source>(no source)</source>
        <translation>（无源）</translation>
    </message>
    <message>
        <location filename="../panels/MultiviewWindow.cpp" line="209"/>
        <source>Full Screen on Screen %1 (%2)</source>
        <translation>在屏幕 %1（%2）上全屏</translation>
    </message>
    <message>
        <location filename="../panels/MultiviewWindow.cpp" line="211"/>
        <source>In a Window</source>
        <translation>窗口显示</translation>
    </message>
    <message>
        <location filename="../panels/MultiviewWindow.cpp" line="213"/>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
</context>
<context>
    <name>selvane::OutputSettingsPanel</name>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="454"/>
        <source>Recording folder</source>
        <translation>录制文件夹</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="477"/>
        <source>8K requires hardware HEVC encoding</source>
        <translation>8K 需要硬件 HEVC 编码</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="481"/>
        <source>8K60 uses the Performance preset to maintain real-time output</source>
        <translation>8K60 使用“性能”预设以保持实时输出</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="569"/>
        <source>failed: %1</source>
        <translation>失败：%1</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="572"/>
        <source>recording %1  %2  %3 MB</source>
        <translation>录制中 %1  %2  %3 MB</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="578"/>
        <source>stopped</source>
        <translation>已停止</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="595"/>
        <source>&lt;b&gt;Recording&lt;/b&gt;</source>
        <translation>&lt;b&gt;录制&lt;/b&gt;</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="596"/>
        <location filename="../panels/OutputSettingsPanel.cpp" line="597"/>
        <source>Record to file</source>
        <translation>录制到文件</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="598"/>
        <source>Folder and file name; {date} and {time} become the start time</source>
        <translation>文件夹和文件名；{date} 和 {time} 会替换为开始时间</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="599"/>
        <source>Browse…</source>
        <translation>浏览…</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="600"/>
        <source>Choose the recording folder</source>
        <translation>选择录制文件夹</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="601"/>
        <source>Container:</source>
        <translation>封装格式：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="602"/>
        <source>Container</source>
        <translation>封装格式</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="603"/>
        <location filename="../panels/OutputSettingsPanel.cpp" line="604"/>
        <source>Segment recording</source>
        <translation>分段录制</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="605"/>
        <source> min</source>
        <translation> 分钟</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="606"/>
        <source>Segment minutes</source>
        <translation>分段时长</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="607"/>
        <source> GiB</source>
        <translation> GiB</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="608"/>
        <source>Segment size</source>
        <translation>分段大小</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="609"/>
        <source>Start a new file at a keyframe when either limit is reached</source>
        <translation>达到任一限制时，在关键帧处开始新文件</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="610"/>
        <source>Keep free:</source>
        <translation>保留空闲：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="611"/>
        <source> MiB</source>
        <translation> MiB</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="612"/>
        <source>off</source>
        <translation>关闭</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="613"/>
        <source>Keep free</source>
        <translation>保留空闲</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="614"/>
        <source>Ring recording: with segments, this take&apos;s oldest segments are deleted while the disk has less free</source>
        <translation>循环录制：启用分段时，磁盘空闲不足此值则删除本次录制最早的分段</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="616"/>
        <source>Twin copy in:</source>
        <translation>副本位置：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="617"/>
        <source>a folder on another disk (empty: none)</source>
        <translation>另一磁盘上的文件夹（留空：无）</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="618"/>
        <source>Twin folder</source>
        <translation>副本文件夹</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="619"/>
        <source>Recording state</source>
        <translation>录制状态</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="620"/>
        <source>&lt;b&gt;Stream targets&lt;/b&gt;</source>
        <translation>&lt;b&gt;推流目标&lt;/b&gt;</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="621"/>
        <source>Destinations on the same encode profile share one encoder to minimize CPU/GPU load.</source>
        <translation>使用同一编码配置的目标共用一个编码器，以降低 CPU/GPU 负载。</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="624"/>
        <source>Add</source>
        <translation>添加</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="625"/>
        <source>Edit</source>
        <translation>编辑</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="626"/>
        <source>Edit Target</source>
        <translation>编辑目标</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="627"/>
        <source>Remove</source>
        <translation>删除</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="628"/>
        <source>&lt;b&gt;Encoding&lt;/b&gt;</source>
        <translation>&lt;b&gt;编码&lt;/b&gt;</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="629"/>
        <source>Resolution:</source>
        <translation>分辨率：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="630"/>
        <source>Same as Program</source>
        <translation>与节目相同</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="632"/>
        <source>%1 (%2 x %3)</source>
        <translation>%1（%2 x %3）</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="637"/>
        <source>Recording/stream output resolution; &apos;Same as Program&apos; follows current canvas size.</source>
        <translation>录制/推流输出分辨率；“与节目相同”跟随当前画布尺寸。</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="638"/>
        <source>Output resolution</source>
        <translation>输出分辨率</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="639"/>
        <source>Frame rate:</source>
        <translation>帧率：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="640"/>
        <source>Frame rate</source>
        <translation>帧率</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="641"/>
        <source>Bitrate:</source>
        <translation>码率：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="642"/>
        <source>Video bitrate</source>
        <translation>视频码率</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="643"/>
        <source>Automatic</source>
        <translation>自动</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="644"/>
        <source>The bitrate follows the preset and the picture size</source>
        <translation>码率跟随预设和画面尺寸</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="645"/>
        <source>Automatic bitrate</source>
        <translation>自动码率</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="646"/>
        <source>Encoder:</source>
        <translation>编码器：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="647"/>
        <source>Auto</source>
        <translation>自动</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="648"/>
        <source>Hardware</source>
        <translation>硬件</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="649"/>
        <source>Software</source>
        <translation>软件</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="650"/>
        <source>Encoder mode</source>
        <translation>编码模式</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="651"/>
        <source>Preset:</source>
        <translation>预设：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="652"/>
        <source>Performance</source>
        <translation>性能</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="653"/>
        <source>Balanced</source>
        <translation>均衡</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="654"/>
        <source>Quality</source>
        <translation>质量</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="655"/>
        <source>Quality preset</source>
        <translation>质量预设</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="656"/>
        <source>Keyframe interval:</source>
        <translation>关键帧间隔：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="657"/>
        <source>Keyframe interval</source>
        <translation>关键帧间隔</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="658"/>
        <source>Output Gain:</source>
        <translation>输出增益：</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="659"/>
        <source>Output Gain</source>
        <translation>输出增益</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="660"/>
        <source>Adjusts the program gain for recording and streaming only. It does not affect channel mixing or monitoring.</source>
        <translation>仅调整录制和推流的节目增益，不影响通道混音和监听。</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="662"/>
        <source>Recording and streaming use the effective canvas resolution. The resolution is locked while output is active.</source>
        <translation>录制和推流使用实际画布分辨率。输出进行时分辨率被锁定。</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="665"/>
        <source>Start Outputs</source>
        <translation>开始输出</translation>
    </message>
    <message>
        <location filename="../panels/OutputSettingsPanel.cpp" line="666"/>
        <source>Stop Outputs</source>
        <translation>停止输出</translation>
    </message>
</context>
<context>
    <name>selvane::OutputStatusView</name>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="45"/>
        <source>connecting</source>
        <translation>连接中</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="47"/>
        <source>online</source>
        <translation>在线</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="49"/>
        <source>congested</source>
        <translation>拥塞</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="51"/>
        <source>reconnecting</source>
        <translation>重连中</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="53"/>
        <source>stopped</source>
        <translation>已停止</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="81"/>
        <source>%1 / %2 kbit/s</source>
        <translation>%1 / %2 kbit/s</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="89"/>
        <source>%1 s</source>
        <translation>%1 秒</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="90"/>
        <source>%1 min</source>
        <translation>%1 分钟</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="91"/>
        <source>%1 h</source>
        <translation>%1 小时</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="93"/>
        <source>Disk: %1 left at this bitrate  ·  %2 free</source>
        <translation>磁盘：按当前码率还可录 %1  ·  剩余 %2</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="104"/>
        <source>Outputs are stopped.</source>
        <translation>输出已停止。</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="106"/>
        <source>&lt;b&gt;On air&lt;/b&gt; %1  ·  %2x%3 @ %4 fps  ·  %5 kbit/s</source>
        <translation>&lt;b&gt;播出中&lt;/b&gt; %1  ·  %2x%3 @ %4 帧/秒  ·  %5 kbit/s</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="112"/>
        <source>Encoder: %1  ·  frames %2  ·  dropped %3</source>
        <translation>编码器：%1  ·  帧 %2  ·  丢弃 %3</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="123"/>
        <source>&lt;span style=&apos;color:#ff5a5a&apos;&gt;Twin failed: %1&lt;/span&gt; (%2)</source>
        <translation>&lt;span style=&apos;color:#ff5a5a&apos;&gt;副本录制失败：%1&lt;/span&gt;（%2）</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="124"/>
        <source>&lt;span style=&apos;color:#ff5a5a&apos;&gt;Recording failed: %1&lt;/span&gt; (%2)</source>
        <translation>&lt;span style=&apos;color:#ff5a5a&apos;&gt;录制失败：%1&lt;/span&gt;（%2）</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="128"/>
        <source>Recording %1  ·  %2</source>
        <translation>录制 %1  ·  %2</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="128"/>
        <source>Twin %1  ·  %2</source>
        <translation>副本 %1  ·  %2</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="138"/>
        <source>program</source>
        <translation>节目</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="140"/>
        <source>multiview</source>
        <translation>多画面</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="142"/>
        <source>channel %1</source>
        <translation>通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="143"/>
        <source>Encode %1 (%2)  %3x%4 @ %5 fps  ·  %6</source>
        <translation>编码 %1（%2）  %3x%4 @ %5 帧/秒  ·  %6</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="151"/>
        <source>failed</source>
        <translation>失败</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="154"/>
        <source>stepped down</source>
        <translation>已降低</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="156"/>
        <source>adaptive</source>
        <translation>自适应</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="162"/>
        <source>&lt;span style=&apos;color:#ff5a5a&apos;&gt;Channel %1 on its own failed: %2&lt;/span&gt; (%3)</source>
        <translation>&lt;span style=&apos;color:#ff5a5a&apos;&gt;通道 %1 单独录制失败：%2&lt;/span&gt;（%3）</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="167"/>
        <source>Channel %1 on its own %2  ·  %3</source>
        <translation>通道 %1 单独录制 %2  ·  %3</translation>
    </message>
    <message>
        <location filename="../panels/OutputStatusView.cpp" line="185"/>
        <source>Output status</source>
        <translation>输出状态</translation>
    </message>
</context>
<context>
    <name>selvane::OutputTimesBox</name>
    <message>
        <location filename="../panels/OutputTimesBox.cpp" line="131"/>
        <source>The outputs start in %1</source>
        <translation>输出将在 %1 后开始</translation>
    </message>
    <message>
        <location filename="../panels/OutputTimesBox.cpp" line="133"/>
        <source>The outputs stop in %1</source>
        <translation>输出将在 %1 后停止</translation>
    </message>
    <message>
        <location filename="../panels/OutputTimesBox.cpp" line="135"/>
        <source>Nothing due: the outputs start and stop by hand</source>
        <translation>没有待执行的时间：输出由手动开始和停止</translation>
    </message>
    <message>
        <location filename="../panels/OutputTimesBox.cpp" line="147"/>
        <source>Start and Stop by Themselves</source>
        <translation>自动开始和停止</translation>
    </message>
    <message>
        <location filename="../panels/OutputTimesBox.cpp" line="148"/>
        <source>Start:</source>
        <translation>开始：</translation>
    </message>
    <message>
        <location filename="../panels/OutputTimesBox.cpp" line="149"/>
        <source>Stop:</source>
        <translation>停止：</translation>
    </message>
    <message>
        <location filename="../panels/OutputTimesBox.cpp" line="150"/>
        <location filename="../panels/OutputTimesBox.cpp" line="153"/>
        <source>By hand</source>
        <translation>手动</translation>
    </message>
    <message>
        <location filename="../panels/OutputTimesBox.cpp" line="151"/>
        <source>At the schedule&apos;s start</source>
        <translation>节目编排开始时</translation>
    </message>
    <message>
        <location filename="../panels/OutputTimesBox.cpp" line="152"/>
        <location filename="../panels/OutputTimesBox.cpp" line="155"/>
        <source>At</source>
        <translation>定时</translation>
    </message>
    <message>
        <location filename="../panels/OutputTimesBox.cpp" line="154"/>
        <source>At the schedule&apos;s end</source>
        <translation>节目编排结束时</translation>
    </message>
</context>
<context>
    <name>selvane::OutputTimesDesk</name>
    <message>
        <location filename="../app/OutputTimesDesk.cpp" line="46"/>
        <source>Output Times</source>
        <translation>输出时间</translation>
    </message>
</context>
<context>
    <name>selvane::OverlayClipDialog</name>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="402"/>
        <source>Choose the Overlay Video</source>
        <translation>选择叠加视频</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="402"/>
        <source>Choose the Overlay Image</source>
        <translation>选择叠加图片</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="404"/>
        <source>Videos (*.mp4 *.mov *.mkv *.avi *.flv *.ts *.webm);;All files (*)</source>
        <translation>视频 (*.mp4 *.mov *.mkv *.avi *.flv *.ts *.webm);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="405"/>
        <source>Images (*.png *.jpg *.jpeg *.bmp *.webp *.gif);;All files (*)</source>
        <translation>图片 (*.png *.jpg *.jpeg *.bmp *.webp *.gif);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="419"/>
        <source>Overlay Clip</source>
        <translation>叠加片段</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="420"/>
        <source>ID:</source>
        <translation>ID：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="421"/>
        <source>Clip ID</source>
        <translation>片段 ID</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="422"/>
        <source>Kind:</source>
        <translation>类型：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="423"/>
        <source>Overlay kind</source>
        <translation>叠加类型</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="424"/>
        <source>Text</source>
        <translation>文字</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="425"/>
        <source>Image</source>
        <translation>图片</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="426"/>
        <source>Video</source>
        <translation>视频</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="427"/>
        <source>Text:</source>
        <translation>文字：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="428"/>
        <source>Overlay text</source>
        <translation>叠加文字</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="429"/>
        <source>File:</source>
        <translation>文件：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="430"/>
        <source>Media file</source>
        <translation>媒体文件</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="431"/>
        <source>Browse...</source>
        <translation>浏览...</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="432"/>
        <source>Browse for the media file</source>
        <translation>浏览媒体文件</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="433"/>
        <source>X, Y, W, H:</source>
        <translation>X、Y、宽、高：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="434"/>
        <source>The rectangle as fractions of the canvas width and height.</source>
        <translation>矩形位置与大小，以画布宽度和高度的比例表示。</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="435"/>
        <source>X</source>
        <translation>X</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="436"/>
        <source>Y</source>
        <translation>Y</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="437"/>
        <source>Width</source>
        <translation>宽度</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="438"/>
        <source>Height</source>
        <translation>高度</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="439"/>
        <source>Opacity:</source>
        <translation>不透明度：</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="440"/>
        <source>Opacity</source>
        <translation>不透明度</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="442"/>
        <location filename="../panels/ClipDialogs.cpp" line="443"/>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <location filename="../panels/ClipDialogs.cpp" line="444"/>
        <location filename="../panels/ClipDialogs.cpp" line="445"/>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>selvane::OverlayListModel</name>
    <message>
        <location filename="../panels/OverlayListModel.cpp" line="63"/>
        <source>(no text)</source>
        <translation>（无文字）</translation>
    </message>
    <message>
        <location filename="../panels/OverlayListModel.cpp" line="67"/>
        <source>Video</source>
        <translation>视频</translation>
    </message>
    <message>
        <location filename="../panels/OverlayListModel.cpp" line="67"/>
        <source>Image</source>
        <translation>图片</translation>
    </message>
    <message>
        <location filename="../panels/OverlayListModel.cpp" line="70"/>
        <source> (hidden)</source>
        <translation>（隐藏）</translation>
    </message>
    <message>
        <location filename="../panels/OverlayListModel.cpp" line="73"/>
        <source>  [schedule]</source>
        <translation>  [节目编排]</translation>
    </message>
</context>
<context>
    <name>selvane::OverlayRowsModel</name>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="89"/>
        <source>Kind</source>
        <translation>类型</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="96"/>
        <source>Text</source>
        <translation>文字</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="98"/>
        <source>Video</source>
        <translation>视频</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="100"/>
        <source>Image</source>
        <translation>图片</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="109"/>
        <source>%1 at %2, %3 size %4 x %5, opacity %6</source>
        <translation>%1 位置 %2, %3 大小 %4 x %5，不透明度 %6</translation>
    </message>
</context>
<context>
    <name>selvane::ProductionPanel</name>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="258"/>
        <source>Choose a Stinger Clip</source>
        <translation>选择过场动画片段</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="259"/>
        <source>Clips with alpha (*.mov *.webm *.mkv *.avi *.mp4);;All files (*)</source>
        <translation>带透明通道的片段 (*.mov *.webm *.mkv *.avi *.mp4);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="331"/>
        <source>Preview: Channel %1</source>
        <translation>预监：通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="332"/>
        <source>Preview: none (click a channel&apos;s picture)</source>
        <translation>预监：无（点击通道画面）</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="336"/>
        <location filename="../panels/ProductionPanel.cpp" line="366"/>
        <source>Cut</source>
        <translation>切换</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="336"/>
        <source>Mix</source>
        <translation>叠化</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="336"/>
        <source>Wipe</source>
        <translation>划像</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="336"/>
        <source>Dip to colour</source>
        <translation>经色场过渡</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="336"/>
        <source>Stinger</source>
        <translation>过场动画</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="340"/>
        <source>Left to right</source>
        <translation>从左到右</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="340"/>
        <source>Right to left</source>
        <translation>从右到左</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="340"/>
        <source>Top down</source>
        <translation>从上到下</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="340"/>
        <source>Bottom up</source>
        <translation>从下到上</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="342"/>
        <source>Transition</source>
        <translation>转场</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="343"/>
        <source>Duration</source>
        <translation>时长</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="344"/>
        <location filename="../panels/ProductionPanel.cpp" line="349"/>
        <source> ms</source>
        <translation> 毫秒</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="345"/>
        <source>Clip</source>
        <translation>片段</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="346"/>
        <source>A video with alpha</source>
        <translation>带透明通道的视频</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="347"/>
        <source>Choose a stinger clip</source>
        <translation>选择过场动画片段</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="348"/>
        <source>Switch at</source>
        <translation>切换于</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="350"/>
        <source>Middle</source>
        <translation>中点</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="354"/>
        <source>Ready: %1 s, switch at %2 s</source>
        <translation>就绪：%1 秒，于 %2 秒切换</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="355"/>
        <source>Ready: %1 s, switch at %2 s (no alpha: it covers the picture)</source>
        <translation>就绪：%1 秒，于 %2 秒切换（无透明通道：将遮住整个画面）</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="359"/>
        <source>Loading…</source>
        <translation>加载中…</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="361"/>
        <source>Cannot be used (%1): takes cut instead</source>
        <translation>无法使用（%1）：切换改为硬切</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="364"/>
        <source>Direct takes use the transition</source>
        <translation>直接切换也使用转场</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="365"/>
        <source>Take</source>
        <translation>上节目</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="367"/>
        <source>Slate</source>
        <translation>垫片</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="368"/>
        <source>The slate on air; any cut or take ends it</source>
        <translation>垫片画面上节目；任何切换都会结束它</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="369"/>
        <source>FTB</source>
        <translation>淡出黑场</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="370"/>
        <source>Fade to black, and back</source>
        <translation>淡出到黑场，再次按下恢复</translation>
    </message>
    <message>
        <location filename="../panels/ProductionPanel.cpp" line="371"/>
        <source>T-bar</source>
        <translation>推杆</translation>
    </message>
</context>
<context>
    <name>selvane::ProgramPreview</name>
    <message>
        <location filename="../panels/ProgramPreview.cpp" line="167"/>
        <source>No signal</source>
        <translation>无信号</translation>
    </message>
</context>
<context>
    <name>selvane::ProxyDialog</name>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="134"/>
        <source>Network Proxy</source>
        <translation>网络代理</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="135"/>
        <source>Mode</source>
        <translation>模式</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="136"/>
        <source>Automatic (the system&apos;s settings)</source>
        <translation>自动（使用系统设置）</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="137"/>
        <source>Automatic</source>
        <translation>自动</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="138"/>
        <location filename="../panels/ProxyDialog.cpp" line="139"/>
        <source>Manual</source>
        <translation>手动</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="140"/>
        <source>Off (connect directly)</source>
        <translation>关闭（直接连接）</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="141"/>
        <source>Off</source>
        <translation>关闭</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="142"/>
        <source>HTTP proxy:</source>
        <translation>HTTP 代理：</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="143"/>
        <source>HTTP proxy URL</source>
        <translation>HTTP 代理地址</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="144"/>
        <source>Used for HTTP and HTTPS sources and targets.</source>
        <translation>用于 HTTP 和 HTTPS 信号源与推流目标。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="145"/>
        <source>SOCKS proxy:</source>
        <translation>SOCKS 代理：</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="146"/>
        <source>SOCKS proxy URL</source>
        <translation>SOCKS 代理地址</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="147"/>
        <source>SOCKS5, used for RTMP, RTMPS, RTSP and TCP sources and targets; user:password@ is allowed.</source>
        <translation>SOCKS5，用于 RTMP、RTMPS、RTSP 和 TCP 信号源与推流目标；可包含 user:password@。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="149"/>
        <source>Hide</source>
        <translation>隐藏</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="149"/>
        <source>Show</source>
        <translation>显示</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="150"/>
        <source>Show the SOCKS proxy URL</source>
        <translation>显示 SOCKS 代理地址</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="151"/>
        <source>Found on this system:</source>
        <translation>本机检测到：</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="152"/>
        <source>Proxy found on this system</source>
        <translation>本机检测到的代理</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="154"/>
        <source>Test connection to:</source>
        <translation>测试连接到：</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="155"/>
        <source>Test host and port</source>
        <translation>测试主机和端口</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="156"/>
        <location filename="../panels/ProxyDialog.cpp" line="157"/>
        <source>Test</source>
        <translation>测试</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="158"/>
        <source>Test result</source>
        <translation>测试结果</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="160"/>
        <location filename="../panels/ProxyDialog.cpp" line="194"/>
        <source>Testing...</source>
        <translation>正在测试…</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="165"/>
        <location filename="../panels/ProxyDialog.cpp" line="166"/>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="167"/>
        <location filename="../panels/ProxyDialog.cpp" line="168"/>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="175"/>
        <source>Nothing found: connections go directly.</source>
        <translation>未检测到代理：直接连接。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="176"/>
        <source>(none)</source>
        <translation>（无）</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="177"/>
        <source>environment variables</source>
        <translation>环境变量</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="178"/>
        <source>Source: %1</source>
        <translation>来源：%1</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="179"/>
        <source>HTTP: %1</source>
        <translation>HTTP：%1</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="180"/>
        <source>HTTPS: %1</source>
        <translation>HTTPS：%1</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="181"/>
        <source>SOCKS: %1</source>
        <translation>SOCKS：%1</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="183"/>
        <source>Direct: %1</source>
        <translation>直连：%1</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="215"/>
        <source>Connected to %1 directly (no proxy is set) in %2 ms.</source>
        <translation>已直接连接到 %1（未设置代理），用时 %2 毫秒。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="218"/>
        <source>Connected to %1 through %2 in %3 ms.</source>
        <translation>已通过 %2 连接到 %1，用时 %3 毫秒。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="222"/>
        <source>Enter a host and port such as example.com:443.</source>
        <translation>请输入主机和端口，例如 example.com:443。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="224"/>
        <source>The proxy %1 was not found.</source>
        <translation>找不到代理 %1。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="226"/>
        <source>Cannot reach the proxy %1.</source>
        <translation>无法连接代理 %1。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="227"/>
        <source>Cannot reach the proxy %1 (%2).</source>
        <translation>无法连接代理 %1（%2）。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="229"/>
        <source>The proxy %1 did not answer within %2 ms.</source>
        <translation>代理 %1 在 %2 毫秒内没有响应。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="231"/>
        <source>The proxy %1 closed the connection.</source>
        <translation>代理 %1 关闭了连接。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="233"/>
        <source>The proxy %1 asks for a user name and password.</source>
        <translation>代理 %1 要求提供用户名和密码。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="235"/>
        <source>The proxy %1 refused the user name and password.</source>
        <translation>代理 %1 拒绝了用户名和密码。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="238"/>
        <source>The proxy %1 refused to connect to %2 (HTTP %3).</source>
        <translation>代理 %1 拒绝连接到 %2（HTTP %3）。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="244"/>
        <source>general failure</source>
        <translation>一般性故障</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="247"/>
        <source>not allowed by the proxy&apos;s rules</source>
        <translation>代理规则不允许</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="250"/>
        <source>network unreachable</source>
        <translation>网络不可达</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="253"/>
        <source>host unreachable</source>
        <translation>主机不可达</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="256"/>
        <source>connection refused</source>
        <translation>连接被拒绝</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="259"/>
        <source>TTL expired</source>
        <translation>TTL 已过期</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="262"/>
        <source>command not supported</source>
        <translation>不支持该命令</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="265"/>
        <source>address type not supported</source>
        <translation>不支持该地址类型</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="268"/>
        <source>unknown reply</source>
        <translation>未知应答</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="271"/>
        <source>The proxy %1 could not connect to %2: %3 (reply %4).</source>
        <translation>代理 %1 无法连接到 %2：%3（应答码 %4）。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="276"/>
        <source>The proxy %1 does not answer as a SOCKS5 proxy.</source>
        <translation>代理 %1 的应答不是 SOCKS5 代理的应答。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="277"/>
        <source>The proxy %1 does not answer as an HTTP proxy.</source>
        <translation>代理 %1 的应答不是 HTTP 代理的应答。</translation>
    </message>
    <message>
        <location filename="../panels/ProxyDialog.cpp" line="279"/>
        <source>Cannot connect to %1 directly (no proxy is set).</source>
        <translation>无法直接连接到 %1（未设置代理）。</translation>
    </message>
</context>
<context>
    <name>selvane::RecordingProfileBox</name>
    <message>
        <location filename="../panels/RecordingProfileBox.cpp" line="123"/>
        <source>Profile:</source>
        <translation>配置：</translation>
    </message>
    <message>
        <location filename="../panels/RecordingProfileBox.cpp" line="124"/>
        <source>The encode profile the recording takes</source>
        <translation>录制所用的编码配置</translation>
    </message>
    <message>
        <location filename="../panels/RecordingProfileBox.cpp" line="125"/>
        <source>Record on its own:</source>
        <translation>单独录制：</translation>
    </message>
    <message>
        <location filename="../panels/RecordingProfileBox.cpp" line="127"/>
        <source>Record channel %1 on its own, with its own sound</source>
        <translation>单独录制通道 %1，带其自身声音</translation>
    </message>
    <message>
        <location filename="../panels/RecordingProfileBox.cpp" line="128"/>
        <source>Channels&apos; profile:</source>
        <translation>通道配置：</translation>
    </message>
    <message>
        <location filename="../panels/RecordingProfileBox.cpp" line="129"/>
        <source>A channel recorded on its own is written beside the recording as NAME_isoN with the same container.</source>
        <translation>单独录制的通道以 名称_isoN 写在录制文件旁边，封装格式相同。</translation>
    </message>
</context>
<context>
    <name>selvane::ScheduleRowsModel</name>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="27"/>
        <source>ID</source>
        <translation>ID</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="31"/>
        <source>Start</source>
        <translation>开始</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="33"/>
        <source>End</source>
        <translation>结束</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleRowsModel.cpp" line="35"/>
        <source>Details</source>
        <translation>详情</translation>
    </message>
</context>
<context>
    <name>selvane::ScheduleTimeline</name>
    <message>
        <location filename="../panels/ScheduleTimeline.cpp" line="32"/>
        <location filename="../panels/ScheduleTimeline.cpp" line="256"/>
        <source>Schedule timeline</source>
        <translation>节目编排时间轴</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleTimeline.cpp" line="151"/>
        <source>Base</source>
        <translation>基础</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleTimeline.cpp" line="154"/>
        <source>Overlays</source>
        <translation>叠加</translation>
    </message>
</context>
<context>
    <name>selvane::ScheduleWindow</name>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="415"/>
        <location filename="../panels/ScheduleWindow.cpp" line="428"/>
        <location filename="../panels/ScheduleWindow.cpp" line="682"/>
        <source>Clear Overlay Clips</source>
        <translation>清空叠加片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="416"/>
        <source>Delete all overlay clips?</source>
        <translation>删除全部叠加片段？</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="418"/>
        <location filename="../panels/ScheduleWindow.cpp" line="428"/>
        <location filename="../panels/ScheduleWindow.cpp" line="676"/>
        <source>Clear Base Clips</source>
        <translation>清空基础片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="419"/>
        <source>Delete all base clips?</source>
        <translation>删除全部基础片段？</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="451"/>
        <source>Base %1  |  Overlay %2</source>
        <translation>基础 %1  |  叠加 %2</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="477"/>
        <source>Import Program Schedule</source>
        <translation>导入节目编排</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="477"/>
        <source>JSON (*.json);;All files (*)</source>
        <translation>JSON (*.json);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="486"/>
        <location filename="../panels/ScheduleWindow.cpp" line="492"/>
        <location filename="../panels/ScheduleWindow.cpp" line="687"/>
        <source>Import</source>
        <translation>导入</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="486"/>
        <source>Unable to open the file.</source>
        <translation>无法打开该文件。</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="504"/>
        <location filename="../panels/ScheduleWindow.cpp" line="538"/>
        <location filename="../panels/ScheduleWindow.cpp" line="688"/>
        <source>Export</source>
        <translation>导出</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="505"/>
        <source>There are no valid clips to export. Check the validation messages.</source>
        <translation>没有可导出的有效片段。请查看校验提示。</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="522"/>
        <source>Export Program Schedule</source>
        <translation>导出节目编排</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="524"/>
        <source>JSON (*.json)</source>
        <translation>JSON (*.json)</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="538"/>
        <source>Unable to write the file.</source>
        <translation>无法写入该文件。</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="561"/>
        <location filename="../panels/ScheduleWindow.cpp" line="563"/>
        <source>Schedule Check</source>
        <translation>编排检查</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="557"/>
        <source>Schedule check passed: %1 base clip(s), %2 overlay clip(s).</source>
        <translation>节目编排检查通过：%1 个基础片段，%2 个叠加片段。</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="575"/>
        <location filename="../panels/ScheduleWindow.cpp" line="586"/>
        <location filename="../panels/ScheduleWindow.cpp" line="655"/>
        <location filename="../panels/ScheduleWindow.cpp" line="656"/>
        <source>Program Schedule</source>
        <translation>节目编排</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="576"/>
        <source>Add at least one valid base clip.</source>
        <translation>请至少添加一个有效的基础片段。</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="657"/>
        <source>Timeline origin:</source>
        <translation>时间轴起点：</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="658"/>
        <source>Timeline origin</source>
        <translation>时间轴起点</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="659"/>
        <source>Clip times are measured from this date and time.</source>
        <translation>片段时间从此日期时间起算。</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="660"/>
        <source>&lt;b&gt;Base Clips&lt;/b&gt;</source>
        <translation>&lt;b&gt;基础片段&lt;/b&gt;</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="661"/>
        <source>Base clips</source>
        <translation>基础片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="663"/>
        <source>&lt;b&gt;Overlay Clips&lt;/b&gt;</source>
        <translation>&lt;b&gt;叠加片段&lt;/b&gt;</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="664"/>
        <source>Overlay clips</source>
        <translation>叠加片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="671"/>
        <location filename="../panels/ScheduleWindow.cpp" line="677"/>
        <source>Add...</source>
        <translation>添加...</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="332"/>
        <location filename="../panels/ScheduleWindow.cpp" line="671"/>
        <source>Add Base Clip</source>
        <translation>添加基础片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="672"/>
        <location filename="../panels/ScheduleWindow.cpp" line="678"/>
        <source>Edit...</source>
        <translation>编辑...</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="346"/>
        <location filename="../panels/ScheduleWindow.cpp" line="672"/>
        <source>Edit Base Clip</source>
        <translation>编辑基础片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="673"/>
        <location filename="../panels/ScheduleWindow.cpp" line="679"/>
        <source>Remove</source>
        <translation>删除</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="389"/>
        <location filename="../panels/ScheduleWindow.cpp" line="673"/>
        <source>Remove Base Clip</source>
        <translation>删除基础片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="674"/>
        <location filename="../panels/ScheduleWindow.cpp" line="680"/>
        <source>Move Up</source>
        <translation>上移</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="407"/>
        <location filename="../panels/ScheduleWindow.cpp" line="674"/>
        <source>Move Base Clip Up</source>
        <translation>上移基础片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="675"/>
        <location filename="../panels/ScheduleWindow.cpp" line="681"/>
        <source>Move Down</source>
        <translation>下移</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="407"/>
        <location filename="../panels/ScheduleWindow.cpp" line="675"/>
        <source>Move Base Clip Down</source>
        <translation>下移基础片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="676"/>
        <location filename="../panels/ScheduleWindow.cpp" line="682"/>
        <source>Clear</source>
        <translation>清空</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="361"/>
        <location filename="../panels/ScheduleWindow.cpp" line="677"/>
        <source>Add Overlay Clip</source>
        <translation>添加叠加片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="264"/>
        <source>Load Schedule</source>
        <translation>载入节目编排</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="309"/>
        <source>Change Timeline Origin</source>
        <translation>更改时间轴起点</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="375"/>
        <location filename="../panels/ScheduleWindow.cpp" line="678"/>
        <source>Edit Overlay Clip</source>
        <translation>编辑叠加片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="389"/>
        <location filename="../panels/ScheduleWindow.cpp" line="679"/>
        <source>Remove Overlay Clip</source>
        <translation>删除叠加片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="406"/>
        <location filename="../panels/ScheduleWindow.cpp" line="680"/>
        <source>Move Overlay Clip Up</source>
        <translation>上移叠加片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="406"/>
        <location filename="../panels/ScheduleWindow.cpp" line="681"/>
        <source>Move Overlay Clip Down</source>
        <translation>下移叠加片段</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="683"/>
        <source>Undo</source>
        <translation>撤销</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="683"/>
        <source>Undo Schedule Edit</source>
        <translation>撤销节目编排编辑</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="685"/>
        <source>Redo</source>
        <translation>重做</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="685"/>
        <source>Redo Schedule Edit</source>
        <translation>重做节目编排编辑</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="687"/>
        <source>Import...</source>
        <translation>导入...</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="688"/>
        <source>Export...</source>
        <translation>导出...</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="689"/>
        <source>Check</source>
        <translation>检查</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="690"/>
        <source>Stop Schedule</source>
        <translation>停止节目编排</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="690"/>
        <source>Start Schedule</source>
        <translation>开始节目编排</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="693"/>
        <source>RUNNING</source>
        <translation>运行中</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="693"/>
        <source>READY</source>
        <translation>就绪</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="694"/>
        <source>Schedule state</source>
        <translation>编排状态</translation>
    </message>
    <message>
        <location filename="../panels/ScheduleWindow.cpp" line="700"/>
        <source>Clip count</source>
        <translation>片段数量</translation>
    </message>
</context>
<context>
    <name>selvane::SourceDialog</name>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="227"/>
        <source>/path/to/clip.mp4</source>
        <translation>/路径/视频.mp4</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="264"/>
        <source>Select media file</source>
        <translation>选择媒体文件</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="265"/>
        <source>Media (*.mp4 *.mov *.mkv *.avi *.mp3 *.wav);;All files (*)</source>
        <translation>媒体文件 (*.mp4 *.mov *.mkv *.avi *.mp3 *.wav);;所有文件 (*)</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="280"/>
        <source>(No camera found)</source>
        <translation>（未找到摄像头）</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="285"/>
        <location filename="../panels/SourceDialog.cpp" line="452"/>
        <source>(No microphone)</source>
        <translation>（不使用麦克风）</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="303"/>
        <source>This session has no X11 display, so nothing can be captured (on Wayland, run Selvane under XWayland).</source>
        <translation>当前会话没有 X11 显示，无法采集（在 Wayland 下请通过 XWayland 运行 Selvane）。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="308"/>
        <source>Display %1: %2, %3×%4 at %5,%6</source>
        <translation>显示器 %1：%2，%3×%4，位置 %5,%6</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="319"/>
        <source>(No windows — click Refresh)</source>
        <translation>（无可用窗口，点刷新）</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="319"/>
        <source>(No display detected)</source>
        <translation>（未检测到显示器）</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="321"/>
        <source>Window:</source>
        <translation>窗口：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="321"/>
        <source>Display:</source>
        <translation>显示器：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="322"/>
        <source>Refresh windows</source>
        <translation>刷新窗口</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="322"/>
        <source>Refresh displays</source>
        <translation>刷新显示器</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="324"/>
        <location filename="../panels/SourceDialog.cpp" line="422"/>
        <source>Window</source>
        <translation>窗口</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="324"/>
        <location filename="../panels/SourceDialog.cpp" line="421"/>
        <source>Display</source>
        <translation>显示器</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="365"/>
        <source>No camera is available; connect one and press Refresh.</source>
        <translation>没有可用的摄像头；请连接后点“刷新设备”。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="384"/>
        <source>No window to capture; open it and press Refresh.</source>
        <translation>没有可采集的窗口；请打开窗口后点刷新。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="385"/>
        <source>No display to capture.</source>
        <translation>没有可采集的显示器。</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="415"/>
        <source>Select source - Channel %1</source>
        <translation>选择源 - 通道 %1</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="416"/>
        <source>Source type:</source>
        <translation>源类型：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="417"/>
        <source>Local file</source>
        <translation>本地文件</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="418"/>
        <source>URL / network stream</source>
        <translation>URL / 网络流</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="419"/>
        <source>Test signal</source>
        <translation>测试信号</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="420"/>
        <source>Camera / microphone</source>
        <translation>摄像头 / 麦克风</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="427"/>
        <source>Address:</source>
        <translation>地址：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="428"/>
        <source>Browse…</source>
        <translation>浏览…</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="429"/>
        <source>Browse for a media file</source>
        <translation>浏览媒体文件</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="430"/>
        <source>Signal:</source>
        <translation>信号：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="433"/>
        <source>Bars and tone</source>
        <translation>彩条和测试音</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="433"/>
        <source>Moving pattern</source>
        <translation>动态图案</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="433"/>
        <source>Colour</source>
        <translation>纯色</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="435"/>
        <source>Test signal preset</source>
        <translation>测试信号预设</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="436"/>
        <source>Colour:</source>
        <translation>颜色：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="439"/>
        <source>Red</source>
        <translation>红</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="439"/>
        <source>Green</source>
        <translation>绿</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="439"/>
        <source>Blue</source>
        <translation>蓝</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="439"/>
        <source>White</source>
        <translation>白</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="439"/>
        <source>Black</source>
        <translation>黑</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="439"/>
        <source>Grey</source>
        <translation>灰</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="441"/>
        <source>Test signal colour</source>
        <translation>测试信号颜色</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="442"/>
        <source>Camera:</source>
        <translation>摄像头：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="443"/>
        <source>Camera</source>
        <translation>摄像头</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="423"/>
        <location filename="../panels/SourceDialog.cpp" line="444"/>
        <source>Microphone:</source>
        <translation>麦克风：</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="424"/>
        <location filename="../panels/SourceDialog.cpp" line="445"/>
        <source>Microphone</source>
        <translation>麦克风</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="446"/>
        <location filename="../panels/SourceDialog.cpp" line="447"/>
        <source>Refresh devices</source>
        <translation>刷新设备</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="448"/>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <location filename="../panels/SourceDialog.cpp" line="449"/>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>selvane::StatusPanel</name>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="76"/>
        <source>Program frame rate</source>
        <translation>节目帧率</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="77"/>
        <source>Dropped frames</source>
        <translation>丢帧</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="78"/>
        <source>CPU use</source>
        <translation>CPU 占用</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="79"/>
        <source>Output bitrate</source>
        <translation>输出码率</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="80"/>
        <source>Stream target status</source>
        <translation>推流目标状态</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="95"/>
        <source>%1 fps</source>
        <translation>%1 帧/秒</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="97"/>
        <source>dropped: decoders %1, encoder %2</source>
        <translation>丢帧：解码 %1，编码 %2</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="98"/>
        <source>CPU %1 %</source>
        <translation>CPU %1 %</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="98"/>
        <source>CPU –</source>
        <translation>CPU –</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="99"/>
        <source>%1 kbit/s</source>
        <translation>%1 kbit/s</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="100"/>
        <source>outputs off</source>
        <translation>输出未开启</translation>
    </message>
    <message>
        <location filename="../panels/StatusPanel.cpp" line="120"/>
        <source>Target %1: %2</source>
        <translation>目标 %1：%2</translation>
    </message>
</context>
<context>
    <name>selvane::StreamTargetDialog</name>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="55"/>
        <source>Stream target</source>
        <translation>推流目标</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="60"/>
        <source>Target kind</source>
        <translation>目标类型</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="63"/>
        <location filename="../panels/StreamTargetDialog.cpp" line="130"/>
        <source>Server URL</source>
        <translation>服务器地址</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="65"/>
        <source>Browse…</source>
        <translation>浏览…</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="69"/>
        <source>Stream key</source>
        <translation>推流密钥</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="70"/>
        <location filename="../panels/StreamTargetDialog.cpp" line="75"/>
        <source>Show</source>
        <translation>显示</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="72"/>
        <source>Show the stream key</source>
        <translation>显示推流密钥</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="75"/>
        <source>Hide</source>
        <translation>隐藏</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="83"/>
        <source> s</source>
        <translation> 秒</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="88"/>
        <source> segments</source>
        <translation> 个分片</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="90"/>
        <location filename="../panels/StreamTargetDialog.cpp" line="92"/>
        <source>Use this target</source>
        <translation>使用此目标</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="104"/>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="106"/>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="109"/>
        <source>Kind:</source>
        <translation>类型：</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="112"/>
        <source>Segment length:</source>
        <translation>分片时长：</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="113"/>
        <source>Playlist holds:</source>
        <translation>播放列表包含：</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="114"/>
        <source>Profile:</source>
        <translation>配置：</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="129"/>
        <source>Server:</source>
        <translation>服务器：</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="111"/>
        <source>Stream key:</source>
        <translation>推流密钥：</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="44"/>
        <source>HLS folder</source>
        <translation>HLS 文件夹</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="46"/>
        <source>Custom</source>
        <translation>自定义</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="129"/>
        <source>Playlist:</source>
        <translation>播放列表：</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="143"/>
        <source>HLS playlist</source>
        <translation>HLS 播放列表</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="143"/>
        <source>HLS playlists (*.m3u8)</source>
        <translation>HLS 播放列表 (*.m3u8)</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="175"/>
        <source>Enter the path of the playlist on this machine, such as /srv/www/live/index.m3u8.</source>
        <translation>请输入本机上播放列表的路径，例如 /srv/www/live/index.m3u8。</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetDialog.cpp" line="177"/>
        <source>Enter a server URL such as rtmp://host/app or srt://host:port.</source>
        <translation>请填写服务器地址，例如 rtmp://host/app 或 srt://host:port。</translation>
    </message>
</context>
<context>
    <name>selvane::StreamTargetModel</name>
    <message>
        <location filename="../panels/StreamTargetModel.cpp" line="45"/>
        <source>default</source>
        <translation>默认</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetModel.cpp" line="49"/>
        <source>There is no profile of this name: the outputs will not start</source>
        <translation>没有此名称的配置：输出将无法开始</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetModel.cpp" line="70"/>
        <source>On</source>
        <translation>启用</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetModel.cpp" line="72"/>
        <source>Kind</source>
        <translation>类型</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetModel.cpp" line="74"/>
        <source>Address</source>
        <translation>地址</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetModel.cpp" line="76"/>
        <source>Profile</source>
        <translation>配置</translation>
    </message>
    <message>
        <location filename="../panels/StreamTargetModel.cpp" line="78"/>
        <source>Status</source>
        <translation>状态</translation>
    </message>
</context>
<context>
    <name>selvane::TextEffectDialog</name>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="59"/>
        <source>A text holds at most %1 characters: %2 characters were left out.</source>
        <translation>文本最多 %1 个字符：有 %2 个字符未被保留。</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="338"/>
        <source>Text Color</source>
        <translation>文字颜色</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="343"/>
        <source>Background Color</source>
        <translation>背景颜色</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="348"/>
        <source>Shadow Color</source>
        <translation>阴影颜色</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="353"/>
        <source>Outline Color</source>
        <translation>描边颜色</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="397"/>
        <source>Text Effects</source>
        <translation>文字效果</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="398"/>
        <source>Type the text to show on the program</source>
        <translation>输入要在节目上显示的文字</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="399"/>
        <source>Overlay text</source>
        <translation>叠加文字</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="400"/>
        <source>X:</source>
        <translation>X：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="401"/>
        <source>Y:</source>
        <translation>Y：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="402"/>
        <source>Text X</source>
        <translation>文字 X</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="403"/>
        <source>Text Y</source>
        <translation>文字 Y</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="404"/>
        <source>Position of the text&apos;s top-left corner in the 640 x 360 scene, whatever the output size.</source>
        <translation>文字左上角在 640 x 360 场景中的位置，与输出尺寸无关。</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="409"/>
        <source>Font Style</source>
        <translation>字体样式</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="414"/>
        <source>Font:</source>
        <translation>字体：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="415"/>
        <source>Size:</source>
        <translation>字号：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="416"/>
        <source>Font</source>
        <translation>字体</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="417"/>
        <source>Font size</source>
        <translation>字号</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="418"/>
        <source>Bold</source>
        <translation>粗体</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="419"/>
        <source>Italic</source>
        <translation>斜体</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="420"/>
        <source>Underline</source>
        <translation>下划线</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="421"/>
        <source>Strikeout</source>
        <translation>删除线</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="428"/>
        <source>Colors &amp; Effects</source>
        <translation>颜色与效果</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="429"/>
        <source>Text color:</source>
        <translation>文字颜色：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="430"/>
        <source>Text color</source>
        <translation>文字颜色</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="431"/>
        <location filename="../panels/TextEffectDialog.cpp" line="432"/>
        <source>Background</source>
        <translation>背景</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="433"/>
        <source>Background color</source>
        <translation>背景颜色</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="434"/>
        <source>Padding:</source>
        <translation>边距：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="435"/>
        <source>Background padding</source>
        <translation>背景边距</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="436"/>
        <location filename="../panels/TextEffectDialog.cpp" line="437"/>
        <source>Shadow</source>
        <translation>阴影</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="438"/>
        <source>Shadow color</source>
        <translation>阴影颜色</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="439"/>
        <source>Offset:</source>
        <translation>偏移：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="440"/>
        <source>Shadow offset X</source>
        <translation>阴影偏移 X</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="441"/>
        <source>Shadow offset Y</source>
        <translation>阴影偏移 Y</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="442"/>
        <location filename="../panels/TextEffectDialog.cpp" line="443"/>
        <source>Outline</source>
        <translation>描边</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="444"/>
        <source>Outline color</source>
        <translation>描边颜色</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="445"/>
        <source>Width:</source>
        <translation>宽度：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="446"/>
        <source>Outline width</source>
        <translation>描边宽度</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="447"/>
        <source>Opacity:</source>
        <translation>不透明度：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="448"/>
        <source>Opacity</source>
        <translation>不透明度</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="449"/>
        <source>Opacity value</source>
        <translation>不透明度数值</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="450"/>
        <source>In units of the 640 x 360 scene; scaled with the output.</source>
        <translation>以 640 x 360 场景为单位，随输出尺寸缩放。</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="456"/>
        <source>Scroll</source>
        <translation>滚动</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="457"/>
        <source>Enable</source>
        <translation>启用</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="458"/>
        <source>Scroll text</source>
        <translation>滚动文字</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="459"/>
        <source>Direction:</source>
        <translation>方向：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="460"/>
        <source>Passes:</source>
        <translation>次数：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="461"/>
        <source>Speed:</source>
        <translation>速度：</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="462"/>
        <source>None</source>
        <translation>无</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="463"/>
        <source>Left to Right</source>
        <translation>从左到右</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="464"/>
        <source>Right to Left</source>
        <translation>从右到左</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="465"/>
        <source>Scroll direction</source>
        <translation>滚动方向</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="466"/>
        <source>Scroll passes</source>
        <translation>滚动次数</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="468"/>
        <source>Number of complete passes. After the last pass, the text remains off-screen.</source>
        <translation>完整滚动的次数。最后一次滚动结束后，文字停留在画面之外。</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="469"/>
        <source>Scroll speed</source>
        <translation>滚动速度</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="470"/>
        <source>Scroll speed (higher is faster).</source>
        <translation>滚动速度（数值越大越快）。</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="472"/>
        <location filename="../panels/TextEffectDialog.cpp" line="473"/>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <location filename="../panels/TextEffectDialog.cpp" line="474"/>
        <location filename="../panels/TextEffectDialog.cpp" line="475"/>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>selvane::TextOverlayPanel</name>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="183"/>
        <source>Text Overlay</source>
        <translation>文字叠加</translation>
    </message>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="198"/>
        <source>Texts over the program (at most %1). Tick a text to show it; double-click it to edit.</source>
        <translation>叠加在节目上的文字（最多 %1 个）。勾选文字即显示；双击可编辑。</translation>
    </message>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="201"/>
        <source>Text overlays</source>
        <translation>文字叠加列表</translation>
    </message>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="202"/>
        <source>Add...</source>
        <translation>添加...</translation>
    </message>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="203"/>
        <source>Add Text</source>
        <translation>添加文字</translation>
    </message>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="204"/>
        <source>Edit...</source>
        <translation>编辑...</translation>
    </message>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="205"/>
        <source>Edit Text</source>
        <translation>编辑文字</translation>
    </message>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="206"/>
        <source>Duplicate</source>
        <translation>复制</translation>
    </message>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="207"/>
        <source>Duplicate Text</source>
        <translation>复制文字</translation>
    </message>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="208"/>
        <source>Remove</source>
        <translation>删除</translation>
    </message>
    <message>
        <location filename="../panels/TextOverlayPanel.cpp" line="209"/>
        <source>Remove Text</source>
        <translation>删除文字</translation>
    </message>
</context>
<context>
    <name>selvane::TextPreviewWidget</name>
    <message>
        <location filename="../panels/TextPreviewWidget.cpp" line="334"/>
        <source>Text preview</source>
        <translation>文字预览</translation>
    </message>
    <message>
        <location filename="../panels/TextPreviewWidget.cpp" line="335"/>
        <source>Drag the text to place it on the program.</source>
        <translation>拖动文字以确定其在节目上的位置。</translation>
    </message>
    <message>
        <location filename="../panels/TextPreviewWidget.cpp" line="336"/>
        <source>Text position</source>
        <translation>文字位置</translation>
    </message>
    <message>
        <location filename="../panels/TextPreviewWidget.cpp" line="343"/>
        <source>X:%1 Y:%2</source>
        <translation>X:%1 Y:%2</translation>
    </message>
</context>
<context>
    <name>selvane::UpdateCheck</name>
    <message>
        <location filename="../app/UpdateCheck.cpp" line="182"/>
        <source>the download is larger than the manifest says</source>
        <translation>下载内容比清单所述更大</translation>
    </message>
    <message>
        <location filename="../app/UpdateCheck.cpp" line="206"/>
        <source>the download has %1 bytes, the manifest says %2</source>
        <translation>下载内容为 %1 字节，清单所述为 %2 字节</translation>
    </message>
    <message>
        <location filename="../app/UpdateCheck.cpp" line="212"/>
        <source>the download&apos;s SHA-256 is not the one the manifest gives</source>
        <translation>下载内容的 SHA-256 与清单给出的不一致</translation>
    </message>
</context>
<context>
    <name>selvane::UpdateNotice</name>
    <message>
        <location filename="../app/UpdateNotice.cpp" line="63"/>
        <source>the installer did not start</source>
        <translation>安装程序未能启动</translation>
    </message>
    <message>
        <location filename="../app/UpdateNotice.cpp" line="85"/>
        <source>Try Again</source>
        <translation>重试</translation>
    </message>
    <message>
        <location filename="../app/UpdateNotice.cpp" line="85"/>
        <source>Download</source>
        <translation>下载</translation>
    </message>
    <message>
        <location filename="../app/UpdateNotice.cpp" line="86"/>
        <source>Download the update</source>
        <translation>下载更新</translation>
    </message>
    <message>
        <location filename="../app/UpdateNotice.cpp" line="87"/>
        <source>Update download progress</source>
        <translation>更新下载进度</translation>
    </message>
    <message>
        <location filename="../app/UpdateNotice.cpp" line="92"/>
        <source>Selvane %1 is available.</source>
        <translation>Selvane %1 已发布。</translation>
    </message>
    <message>
        <location filename="../app/UpdateNotice.cpp" line="95"/>
        <source>Downloading Selvane %1...</source>
        <translation>正在下载 Selvane %1...</translation>
    </message>
    <message>
        <location filename="../app/UpdateNotice.cpp" line="99"/>
        <source>The installer of Selvane %1 has started.</source>
        <translation>Selvane %1 的安装程序已启动。</translation>
    </message>
    <message>
        <location filename="../app/UpdateNotice.cpp" line="102"/>
        <source>The installer of Selvane %1 for Windows is at %2.</source>
        <translation>Selvane %1 的 Windows 安装程序位于 %2。</translation>
    </message>
    <message>
        <location filename="../app/UpdateNotice.cpp" line="106"/>
        <source>The update was not downloaded: %1</source>
        <translation>更新未下载：%1</translation>
    </message>
</context>
<context>
    <name>selvane::WindowDocks</name>
    <message>
        <location filename="../app/WindowDocks.cpp" line="43"/>
        <source>Output Settings</source>
        <translation>输出设置</translation>
    </message>
    <message>
        <location filename="../app/WindowDocks.cpp" line="45"/>
        <source>Output Preview</source>
        <translation>输出预览</translation>
    </message>
    <message>
        <location filename="../app/WindowDocks.cpp" line="47"/>
        <source>Audio Mixer</source>
        <translation>混音器</translation>
    </message>
    <message>
        <location filename="../app/WindowDocks.cpp" line="49"/>
        <source>Text Overlay</source>
        <translation>文字叠加</translation>
    </message>
    <message>
        <location filename="../app/WindowDocks.cpp" line="51"/>
        <source>Video Overlay</source>
        <translation>视频叠加</translation>
    </message>
    <message>
        <location filename="../app/WindowDocks.cpp" line="53"/>
        <source>Image Playback</source>
        <translation>图片播放</translation>
    </message>
</context>
<context>
    <name>selvane::WindowMenus</name>
    <message>
        <location filename="../app/WindowMenus.cpp" line="80"/>
        <source>&amp;File</source>
        <translation>文件(&amp;F)</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="81"/>
        <source>Export Drawing...</source>
        <translation>导出涂鸦...</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="82"/>
        <source>Open Output Folder</source>
        <translation>打开输出文件夹</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="83"/>
        <source>E&amp;xit</source>
        <translation>退出(&amp;X)</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="84"/>
        <source>&amp;Edit</source>
        <translation>编辑(&amp;E)</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="85"/>
        <source>&amp;Program</source>
        <translation>节目(&amp;P)</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="87"/>
        <source>Take Channel %1</source>
        <translation>切换到通道 %1</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="89"/>
        <source>Preview Channel %1</source>
        <translation>预监通道 %1</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="90"/>
        <source>Take Preview</source>
        <translation>预监上节目</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="91"/>
        <source>Cut to Preview</source>
        <translation>直接切到预监</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="92"/>
        <source>Fade to Black</source>
        <translation>淡出黑场</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="93"/>
        <source>Start Outputs</source>
        <translation>开始输出</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="94"/>
        <source>Stop Outputs</source>
        <translation>停止输出</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="95"/>
        <source>&amp;View</source>
        <translation>视图(&amp;V)</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="96"/>
        <source>Drawing Tools</source>
        <translation>绘图工具</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="97"/>
        <source>Reset Workspace Layout</source>
        <translation>重置工作区布局</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="98"/>
        <source>Multiview</source>
        <translation>多画面监看</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="99"/>
        <source>&amp;Tools</source>
        <translation>工具(&amp;T)</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="100"/>
        <source>Program Scheduling...</source>
        <translation>节目编排...</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="101"/>
        <source>Network Proxy...</source>
        <translation>网络代理...</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="102"/>
        <source>&amp;Help</source>
        <translation>帮助(&amp;H)</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="103"/>
        <source>Language</source>
        <translation>语言</translation>
    </message>
    <message>
        <location filename="../app/WindowMenus.cpp" line="104"/>
        <source>About Selvane</source>
        <translation>关于 Selvane</translation>
    </message>
</context>
</TS>
