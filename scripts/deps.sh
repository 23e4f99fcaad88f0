#!/usr/bin/env bash
# Installs, with apt-get, whatever of the named Debian packages is missing.
# Sourced by the other scripts: ensure_packages PKG...
ensure_packages() {
  local missing=()
  for pkg in "$@"; do
    if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
      missing+=("$pkg")
    fi
  done
  if [ ${#missing[@]} -eq 0 ]; then
    return 0
  fi
  echo "== installing: ${missing[*]}"
  local sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -q >/dev/null
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null
}

# What building the library and its native tests needs; the multilib
# compilers and GoogleTest's sources make the 32-bit native build.
NATIVE_PACKAGES=(cmake make g++ googletest libgtest-dev libbenchmark-dev gcc-multilib g++-multilib)
# The codec modules' libraries, and the independent readers their tests
# compare with.
CODEC_PACKAGES=(libtiff-dev libgif-dev libjpeg62-turbo-dev pkg-config)
CODEC_TEST_PACKAGES=(libtiff-tools giflib-tools python3-pil)
# What the Windows builds and running their tests need.
WINDOWS_PACKAGES=(mingw-w64 g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix binutils-mingw-w64-i686 binutils-mingw-w64-x86-64 wine64 xvfb xauth)
# Printed pages (PostScript from the printer under wine) are looked at
# through ghostscript.
WINDOWS_PACKAGES+=(ghostscript)
