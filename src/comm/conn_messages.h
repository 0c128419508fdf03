// Texts of the connection manager: staged failures (code 0, reported later by the exported
// operation under its own name) and log lines.
#pragma once

namespace molra::connmsg {

// Staged.
inline constexpr char kInconsistentSystemTypes[] = "主备连接系统类型不一致";
inline constexpr char kConnectFailed[] = "connect failed.{}[key:{},addr:{}]\n";
inline constexpr char kBindFailed[] = "conn bind customer failed[key:{},addr:{},khh:{}]\n";
inline constexpr char kMgmtInvalid[] = "认证管理连接已失效";
inline constexpr char kTradeSubscribeInvalid[] = "交易、订阅连接已失效";
inline constexpr char kNotConnected[] = "客户未连接登录，无法获取连接";
inline constexpr char kSessionFailed[] = "发起会话失败";
inline constexpr char kSessionNotConnected[] = "未连接，无法发起会话";

// Logged on reconnect.
inline constexpr char kRebound[] = "连接重新绑定客户号成功[KEY:{} KHH:{}]";
inline constexpr char kRebindFailed[] = "重新连接到服务时绑定客户号失败[KEY:{} KHH:{}]";
inline constexpr char kSubscribeCrash[] = "{} subscribe crash: 订阅句柄置0";
inline constexpr char kEventHandlerName[] = "KelComm::KelConn::on_conn_event";

}  // namespace molra::connmsg
