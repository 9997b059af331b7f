# Sourced by ./run and ./test: installs the Debian packages that are missing and builds. Needs root or sudo to install.

# What building and running needs on a bare Debian 12. The continuous build installs nothing beside this list.
packages=(
  g++ cmake ninja-build
  qtbase5-dev libqt5opengl5-dev libqwt-qt5-dev qttools5-dev qttools5-dev-tools
  libglu1-mesa-dev libgl1-mesa-dri
  libgtest-dev libgmock-dev
  xvfb xauth fonts-dejavu-core locales python3
)
# What ./test --long needs besides.
fuzzing_packages=(clang libclang-rt-14-dev)

install_missing_packages() {
  local missing=() name
  for name in "${packages[@]}"; do
    if [ "$(dpkg-query -W -f='${Status}' "$name" 2>/dev/null)" != "install ok installed" ]; then
      missing+=("$name")
    fi
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}"
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "These packages are missing and can be installed only by root: ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
    >/dev/null
}

# build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  cmake --preset "$preset" -G Ninja -DKORVEX2_WARNINGS_AS_ERRORS=ON >/dev/null
  if [ $# -gt 0 ]; then
    cmake --build --preset "$preset" --target "$@"
  else
    cmake --build --preset "$preset"
  fi
}

# with_display COMMAND...: on the display there is, else on a virtual one
with_display() {
  if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    "$@"
  else
    # Without -noreset the server starts anew whenever its last client leaves, and refuses whoever comes just then.
    xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" "$@"
  fi
}
