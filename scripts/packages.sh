# Installs the Debian packages the build needs, when some are missing. Sourced by the
# other scripts. python3-ezdxf is for the tests only: they read the DXF output back with it.
TARQUIL_PACKAGES="cmake ninja-build g++ clang-format zlib1g-dev libgtest-dev
  nlohmann-json3-dev libcli11-dev libfontconfig-dev libbenchmark-dev libtiff-dev libpng-dev pkg-config
  python3-ezdxf"

# With an argument, installs those packages instead of the build's.
tarquil_install_packages() {
    local missing=""
    for p in ${1:-$TARQUIL_PACKAGES}; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" ||
            missing="$missing $p"
    done
    [ -z "$missing" ] && return 0
    echo "Installing:$missing"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    export DEBIAN_FRONTEND=noninteractive
    $sudo apt-get update -qq
    # shellcheck disable=SC2086
    $sudo apt-get install -y -qq --no-install-recommends $missing
}
