#pragma once

/// What the application knows of its maker when its information file does not say.
namespace vendor {

inline constexpr auto kSupportAddress = "support@ravelin.example";
/// The root of the web site, with the slash at its end.
inline constexpr auto kSiteRoot = "https://ravelin.example/";
/// Tells the store by whom a buyer was sent.
inline constexpr auto kAffiliateToken = "ravelin";

}  // namespace vendor
