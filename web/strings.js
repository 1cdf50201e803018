// Every text the panel shows, in English and Simplified Chinese; {0}, {1} … take arguments.

const texts = {
  connecting: ['connecting…', '连接中…'],
  connected: ['live updates', '实时更新'],
  disconnected: ['updates lost, reconnecting…', '更新中断，正在重连…'],
  language: ['Language', '语言'],
  signOut: ['Sign out', '退出登录'],
  signInTitle: ['Sign in to the control panel', '登录控制面板'],
  tokenLabel: ['Control token', '控制令牌'],
  signIn: ['Sign in', '登录'],
  wrongToken: ['wrong token', '令牌错误'],
  tooMany: ['too many failed sign-ins, try again later', '登录失败次数过多，请稍后再试'],
  unreachable: ['cannot reach Selvane', '无法连接 Selvane'],
  monitors: ['Program and preview', '节目与预览'],
  channels: ['Channels', '通道'],
  program: ['Program', '节目'],
  preview: ['Preview', '预览'],
  channel: ['Channel {0}', '通道 {0}'],
  noSource: ['no source', '无信号源'],
  'state.idle': ['idle', '空闲'],
  'state.connecting': ['connecting', '连接中'],
  'state.live': ['live', '直播中'],
  'state.playing': ['playing', '播放中'],
  'state.paused': ['paused', '已暂停'],
  'state.ended': ['ended', '已结束'],
  'state.failed': ['failed', '失败'],
  'state.reconnecting': ['reconnecting', '重新连接中'],
  cut: ['Cut', '切换'],
  cutTo: ['Cut channel {0} to program', '将通道 {0} 切到节目'],
  pvw: ['Preview', '预览'],
  pvwTo: ['Put channel {0} on preview', '将通道 {0} 设为预览'],
  production: ['Production', '导播'],
  take: ['Take', '转场'],
  takeLabel: ['Take: preview to program with the transition', '转场：以所选转场将预览送上节目'],
  cutLabel: ['Cut: preview to program at once', '切换：立即将预览送上节目'],
  ftb: ['Fade to black', '黑场'],
  ftbLabel: ['Fade to black, or back from black', '淡出到黑场，或从黑场恢复'],
  transition: ['Transition', '转场方式'],
  'tr.cut': ['Cut', '硬切'],
  'tr.mix': ['Mix', '叠化'],
  'tr.wipe': ['Wipe', '划像'],
  'tr.dip': ['Dip to colour', '经由颜色过渡'],
  'tr.stinger': ['Stinger', '动画转场'],
  duration: ['Duration (ms)', '时长（毫秒）'],
  direction: ['Direction', '方向'],
  'dir.left-to-right': ['Left to right', '从左到右'],
  'dir.right-to-left': ['Right to left', '从右到左'],
  'dir.top-down': ['Top down', '从上到下'],
  'dir.bottom-up': ['Bottom up', '从下到上'],
  tbar: ['T-bar', 'T 型推杆'],
  keys: ['Keys: 1–4 cut to a channel, Enter take, Space cut the preview to program.', '快捷键：1–4 切到对应通道，Enter 转场，空格 将预览立即切到节目。'],
  audio: ['Audio', '音频'],
  volumeOf: ['Volume of {0}', '{0}的音量'],
  muteOf: ['Mute {0}', '{0}静音'],
  mute: ['Mute', '静音'],
  meterOf: ['Level of {0}', '{0}的电平'],
  overlays: ['Overlays', '叠加层'],
  noOverlays: ['No overlays.', '没有叠加层。'],
  textOverlay: ['Text {0}', '文字 {0}'],
  mediaOverlay: ['{0} {1}', '{0} {1}'],
  image: ['Image', '图片'],
  video: ['Video', '视频'],
  showText: ['Show text overlay {0}', '显示文字叠加层 {0}'],
  showMedia: ['Show media overlay {0}', '显示媒体叠加层 {0}'],
  textOf: ['Text of overlay {0}', '叠加层 {0} 的文字'],
  save: ['Save', '保存'],
  saveText: ['Save the text of overlay {0}', '保存叠加层 {0} 的文字'],
  outputs: ['Outputs', '输出'],
  start: ['Start', '开始'],
  stop: ['Stop', '停止'],
  startOutputs: ['Start recording and streaming', '开始录制和推流'],
  stopOutputs: ['Stop recording and streaming', '停止录制和推流'],
  onAir: ['On air', '已播出'],
  notRunning: ['not running', '未运行'],
  stopping: ['stopping…', '正在停止…'],
  file: ['File', '文件'],
  size: ['Size', '大小'],
  disk: ['Disk', '磁盘'],
  noRecording: ['no recording', '未录制'],
  recFailed: ['failed: {0}', '失败：{0}'],
  minutesLeft: ['about {0} min left', '约剩 {0} 分钟'],
  target: ['Target {0}', '推流目标 {0}'],
  'ts.online': ['online', '在线'],
  'ts.connecting': ['connecting', '连接中'],
  'ts.reconnecting': ['reconnecting', '重新连接中'],
  'ts.congested': ['congested', '拥塞'],
  'ts.stopped': ['stopped', '已停止'],
  kbps: ['{0} kbit/s', '{0} kbit/s'],
  reconnect: ['Reconnect now', '立即重连'],
  reconnectTarget: ['Reconnect target {0} now', '立即重连推流目标 {0}'],
  schedule: ['Schedule', '节目单'],
  state: ['State', '状态'],
  clip: ['Clip', '片段'],
  running: ['running', '运行中'],
  stopped: ['stopped', '已停止'],
  startSchedule: ['Start the schedule', '开始播放节目单'],
  stopSchedule: ['Stop the schedule', '停止播放节目单'],
  outputsFailed: ['The outputs failed: {0}', '输出失败：{0}'],
  channelError: ['Channel {0}: {1}', '通道 {0}：{1}'],
  done: ['Done.', '完成。'],
  name: ['{0}', '{0}'],
};

const languages = ['en', 'zh'];
const LANG_KEY = 'selvane.lang';
let lang = pickLanguage();

function pickLanguage() {
  const kept = sessionStorage.getItem(LANG_KEY);
  if (languages.includes(kept)) return kept;
  return (navigator.language || 'en').toLowerCase().startsWith('zh') ? 'zh' : 'en';
}

export function language() {
  return lang;
}

export function t(key, ...args) {
  const text = texts[key]?.[languages.indexOf(lang)] ?? key;
  return text.replace(/\{(\d)\}/g, (_, i) => String(args[Number(i)] ?? ''));
}

// data-t: the element's text; data-t-label: its aria-label; data-t-alt: an image's alt;
// data-t-args: arguments for either, separated by "|"; "@key:arg" is itself translated.
export function translate(root = document) {
  const arg = (a) => (a.startsWith('@') ? t(...a.slice(1).split(':')) : a);
  for (const el of root.querySelectorAll('[data-t],[data-t-label],[data-t-alt]')) {
    const args = el.dataset.tArgs ? el.dataset.tArgs.split('|').map(arg) : [];
    if (el.dataset.t) el.textContent = t(el.dataset.t, ...args);
    if (el.dataset.tLabel) el.setAttribute('aria-label', t(el.dataset.tLabel, ...args));
    if (el.dataset.tAlt) el.alt = t(el.dataset.tAlt, ...args);
  }
}

export function setLanguage(next) {
  lang = languages.includes(next) ? next : 'en';
  sessionStorage.setItem(LANG_KEY, lang);
  document.documentElement.lang = lang;
  translate();
}
