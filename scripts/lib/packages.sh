need_packages() {
    local package missing=()
    for package in "$@"; do
        dpkg -s "$package" 2>/dev/null | grep -q '^Status: install ok' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "Installing ${missing[*]}"
    local root=()
    [ "$(id -u)" -eq 0 ] || root=(sudo)
    "${root[@]}" apt-get update -qq
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

npm_packages() {
    command -v npm >/dev/null || echo nodejs npm
}
