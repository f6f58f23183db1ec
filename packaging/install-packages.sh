# shellcheck shell=bash
# install_packages <list>... : installs the Debian packages of the lists that are missing, and nothing when none is.
install_packages() {
    local wanted missing=() package sudo=()
    wanted=$(sed 's/#.*//' "$@" | sort -u)
    for package in $wanted; do
        if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
            missing+=("$package")
        fi
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "These packages are missing, and there is neither root nor sudo to install them: ${missing[*]}" >&2
            return 1
        }
        sudo=(sudo)
    fi
    echo "Installing: ${missing[*]}"
    "${sudo[@]}" apt-get update -qq
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
        >/dev/null
}
