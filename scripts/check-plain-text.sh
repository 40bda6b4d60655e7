#!/bin/sh
# Tool tips, labels and messages show names that anybody may choose, so they are made by
# src/statusbar/PlainText.h, and what is too long is cut by src/render/ElidedText.h. Fails with the
# lines that go around them.
cd "$(dirname "$0")/../src" || exit 2

# Reads "FILE:LINE:TEXT", prints the lines that are not allowed.
bare() {
    grep -vE '^(\./)?(statusbar/PlainText|render/ElidedText)\.(h|cpp):' |
        grep -vE '(PlainText::setToolTip\(|statusItem->setToolTip\(who\.)' |
        # The bar's own items: a title and a value, which each kind of bar shows in its way.
        grep -vE 'void ((BarItem|TrayItem)::)?setToolTip\(const QString& title, const QString& value' |
        grep -E -e '\<setToolTip\(|QToolTip::showText|\<new QLabel\>|\<QLabel(\(|\{| [a-z][A-Za-z]*[;({])' \
            -e '\<new QMessageBox\>|\<QMessageBox(\(|\{| [a-z][A-Za-z]*[;({])' \
            -e 'QMessageBox::(about|critical|information|question|warning)\>' \
            -e '\<setWhatsThis\(|QWhatsThis|QErrorMessage|QInputDialog|QProgressDialog|QWizard' \
            -e 'QTextDocument|QTextEdit|QTextBrowser|QStaticText|\<setHtml\(|\.elidedText\(' \
            -e 'Qt::(RichText|AutoText|MarkdownText)'
}

for sample in 'row->setToolTip(name);' 'auto* l = new QLabel(name);' 'QMessageBox box;' \
    'QMessageBox::warning(this, title, name);' 'metrics.elidedText(name, mode, 9)'; do
    echo "x/X.cpp:1:    $sample" | bare >/dev/null || { echo "the check lets pass: $sample"; exit 2; }
done

lines=$(mktemp)
trap 'rm -f "$lines"' EXIT
grep -rnE '[A-Za-z]' --include='*.h' --include='*.cpp' --exclude-dir=tests . >"$lines"
[ -s "$lines" ] || { echo "no sources found: the check is broken"; exit 2; }
bad=0
if bare <"$lines"; then
    echo "not made by PlainText or ElidedText"
    bad=1
fi
# The toolkit's own panel asks questions about files.
for file in $(grep -rlE '\<new QFileDialog\>|QFileDialog::get' --include='*.cpp' --exclude-dir=tests .); do
    if ! grep -q 'PlainText::keepMessagesPlain(' "$file"; then
        echo "src/$file: a file panel without PlainText::keepMessagesPlain"
        bad=1
    fi
done
exit $bad
