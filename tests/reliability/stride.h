// Where everything runs slower, one request or call in so many fails; which ones, the plain build covers.
#pragma once

#if defined(__SANITIZE_THREAD__)
inline constexpr unsigned Stride = 31;
#elif defined(__SANITIZE_ADDRESS__) || defined(_WIN32)
inline constexpr unsigned Stride = 13;
#else
inline constexpr unsigned Stride = 1;
#endif
