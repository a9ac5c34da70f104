# bash completion for devid

# Processor names from the tool itself, on the folders or saved configuration
# given as the remaining arguments. Bounded and silent: an unreachable board
# costs at most two seconds and prints nothing.
_devid_procs()
{
    local names
    names=$(timeout -k 1 2 "$@" procs --names --log-level 0 2>/dev/null)
    COMPREPLY=($(compgen -W "$names" -- "$cur"))
}

_devid()
{
    local cur prev words cword
    _init_completion || return

    local device_options="--db --board --openocd --json --log-level --load --help"
    local queries="identify procs proc routes settings save"

    case $prev in
        --db | --board)
            _filedir -d
            return
            ;;
        --log-level)
            COMPREPLY=($(compgen -W "0 1 2 3 4 5 6" -- "$cur"))
            return
            ;;
        --load)
            _filedir '@(dim|tdf)'
            return
            ;;
        --openocd)
            return
            ;;
    esac

    # The command path so far ("load routes", "tdf ls") and how many plain
    # arguments follow it; option values are skipped, and the ones that say
    # where the device comes from are kept for asking the tool.
    local i command="" positional=0 tool=("${words[0]/#\~/$HOME}")
    for ((i = 1; i < cword; i++)); do
        case ${words[i]} in
            --db | --board | --load | --openocd)
                tool+=("${words[i]}" "${words[i + 1]/#\~/$HOME}")
                ((i++))
                continue
                ;;
            --log-level | --proc)
                ((i++))
                continue
                ;;
            -*) continue ;;
        esac
        case $command in
            "") command=${words[i]} ;;
            tdf | db) command+=" ${words[i]}" ;;
            load)
                # load FILE, then an optional query
                if ((positional == 0)); then
                    positional=1
                    tool+=(--load "${words[i]/#\~/$HOME}")
                else
                    command+=" ${words[i]}"
                    positional=0
                fi
                ;;
            *) ((positional++)) ;;
        esac
    done

    local options=$device_options
    case $command in
        "")
            options="$device_options --version"
            [[ $cur == -* ]] || { COMPREPLY=($(compgen -W "$queries load tdf db" -- "$cur")); return; }
            ;;
        procs | "load procs") options="$device_options --names" ;;
        proc | "load proc")
            [[ $cur != -* ]] && ((positional == 0)) && { _devid_procs "${tool[@]}"; return; }
            ;;
        routes | "load routes")
            options="$device_options --proc --dot"
            [[ $prev == --proc ]] && { _devid_procs "${tool[@]}"; return; }
            ;;
        save | "load save")
            options="$device_options --tdf"
            [[ $cur == -* ]] || { _filedir; return; }
            ;;
        load)
            if [[ $cur != -* ]]; then
                if ((positional == 0)); then
                    _filedir '@(dim|tdf)'
                else
                    COMPREPLY=($(compgen -W "$queries" -- "$cur"))
                fi
                return
            fi
            ;;
        tdf)
            COMPREPLY=($(compgen -W "ls cat" -- "$cur"))
            return
            ;;
        "tdf ls" | "tdf cat")
            options="--help"
            [[ $command == "tdf ls" ]] && options+=" --json"
            [[ $cur == -* ]] || { ((positional == 0)) && _filedir tdf; return; }
            ;;
        db)
            COMPREPLY=($(compgen -W "check import" -- "$cur"))
            return
            ;;
        "db check")
            options="--db --json --help"
            [[ $cur == -* ]] || { _filedir -d; return; }
            ;;
        "db import")
            options="--out --id --mask --name --all --help"
            case $prev in
                --out) _filedir -d; return ;;
                --id | --mask | --name) return ;;
            esac
            [[ $cur == -* ]] || { _filedir '@(dtb|dts)'; return; }
            ;;
    esac
    # Inside "load FILE" the configuration is given already.
    [[ $command == load* ]] && options=${options/--load /}
    COMPREPLY=($(compgen -W "$options" -- "$cur"))
} &&
    complete -F _devid devid
