# Bare Debian systems to try things in, with no more than apt. Sourced by scripts that run as root and have cmake/packages.sh.

# bare_system FOLDER SUITE: makes FOLDER/SUITE unless it is there.
bare_system() {
    [ ! -d "$1/$2" ] || return 0
    need_packages debootstrap
    echo "== debootstrap $2 into $1/$2"
    mkdir -p "$1"
    rm -rf --one-file-system "$1/$2.part"
    debootstrap --variant=minbase "$2" "$1/$2.part" >"$1/$2.log" || { tail "$1/$2.log" >&2; return 1; }
    mv "$1/$2.part" "$1/$2"
}

# copy_of_system FOLDER SUITE ROOT: makes ROOT anew, to be used up.
copy_of_system() {
    bare_system "$1" "$2"
    rm -rf --one-file-system "$3"
    cp -a --reflink=auto "$1/$2" "$3"
    cp --dereference /etc/resolv.conf "$3/etc/resolv.conf"
}

# inside ROOT USER HOME FOLDER COMMAND [NAME=VALUE...]: runs the command in the folder, with /mnt showing the folder that
# $cache names, if it does. What is mounted for it is gone with its last process.
inside() {
    unshare --mount --pid --fork --kill-child bash -euc '
        root=$1 user=$2 home=$3 folder=$4 command=$5 cache=$6
        shift 6
        mount -t proc proc "$root/proc"
        mount -t tmpfs tmpfs "$root/dev/shm"
        [ -z "$cache" ] || mount --bind "$cache" "$root/mnt"
        exec chroot --userspec="$user:$user" "$root" /usr/bin/env -i HOME="$home" USER="$user" \
            PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "$@" bash -c "cd \"\$1\" && $command" bash "$folder"
        ' bash "${@:1:5}" "${cache:-}" "${@:6}"
}
