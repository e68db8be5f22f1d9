import QtQuick

/// The place and the values of one row of the diff panel's list.
Item {
    required property int kind
    required property int rowTop
    required property int extent
    required property string text
    required property string symbol
    required property int tone
    required property string count
    required property bool isExpanded
    required property bool hasDivider

    y: rowTop
    height: extent
}
