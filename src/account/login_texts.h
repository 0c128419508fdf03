// Error texts of the login, node and trade-date operations (GBK on the wire; the sources are
// UTF-8 and the bytes pass through unconverted).
#pragma once

namespace molra::login_text {

constexpr const char* kIllegalArgument = "非法参数";
constexpr const char* kLoginArgsEmpty = "配置名、客户号、交易密码不能为空";
constexpr const char* kKhhEmpty = "客户号不能为空";
constexpr const char* kKhhOrPasswordEmpty = "客户号或密码为空";
constexpr const char* kConfigUnreadable = "读取配置文件[{}]失败";  // full path of the file
constexpr const char* kUnknownSystemType = "未知系统类型";
constexpr const char* kInvalidSystemType = "无效系统类型{}";      // the set's system type
constexpr const char* kNoConnInfo = "无法获取到连接信息";
constexpr const char* kNoConnConfig = "获取不到连接配置信息";
constexpr const char* kSendFailed = "发送请求失败";
constexpr const char* kManyNodes = "客户存在多个节点，未指定交易节点";
constexpr const char* kNoNode = "客户未开通WOQ交易";
constexpr const char* kNoPool = "创建连接池失败";

}  // namespace molra::login_text
