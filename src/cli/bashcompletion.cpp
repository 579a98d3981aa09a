#include "bashcompletion.h"

#include "optiontable.h"

#include <QStringList>

namespace KEO {

namespace {

/// How bash finds what an option may take.
QString candidates(const OptionName &option)
{
    if (!option.choices.isEmpty())
        return QStringLiteral("__signalscope_words \"$word\" '%1'").arg(option.choices.join(u' '));
    if (option.value == QLatin1String("DIR"))
        return QStringLiteral("__signalscope_folders \"$word\"");
    const QString ending = option.value.section(u'.', 1);
    if (ending.isEmpty() && !option.value.startsWith(QLatin1String("FILE")))
        return QStringLiteral(":");
    const QString endings = ending == QLatin1String("keo") ? QStringLiteral("keo zeo") : ending;
    return QStringLiteral("__signalscope_files \"$word\" ") +
           (endings.isEmpty() ? QStringLiteral("'*'") : endings);
}

// The helpers' names are the script's own: functions of bash are everybody's.
const QLatin1String kScript(
    R"(# Completes the options of signalscope-capture in bash. Written by the program itself:
# signalscope-capture --completion bash

__signalscope_words() {
    mapfile -t COMPREPLY < <(compgen -W "$2" -- "$1")
}

__signalscope_folders() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -d -- "$1")
}

# Folders, and files with one of the endings.
__signalscope_files() {
    local word=$1 ending
    __signalscope_folders "$word"
    shift
    for ending in "$@"; do
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -X "!*.$ending" -- "$word")
    done
}

__signalscope_capture() {
    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]}
    # "--out=folder" comes as three words.
    if [ "$word" = = ]; then
        word=
    elif [ "$option" = = ]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    COMPREPLY=()
    case $option in
%1    *)
        case $word in
        -*) __signalscope_words "$word" '%2' ;;
        *) __signalscope_files "$word" keo zeo analyzer_prj ;;
        esac
        ;;
    esac
}
complete -F __signalscope_capture signalscope-capture
)");

} // namespace

QString bashCompletion()
{
    QString cases;
    QStringList names;
    for (const OptionName &option : captureOptionNames()) {
        names += option.spellings;
        if (!option.value.isEmpty())
            cases += QStringLiteral("    %1) %2 ;;\n")
                         .arg(option.spellings.join(u'|'), candidates(option));
    }
    return QString(kScript).arg(cases, names.join(u' '));
}

} // namespace KEO
