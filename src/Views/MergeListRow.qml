import QtQuick

/// The place and the values of one row of the merge panel's list.
Item {
    required property int kind
    required property int rowTop
    required property int extent
    required property string rowId
    required property string title
    required property string detail
    required property string symbol
    required property string count
    required property bool isExpanded
    required property bool isTicked
    required property bool grouped
    required property string selected
    required property string intoName
    required property string intoDetail
    required property string fromName
    required property string fromDetail
    required property string tracks
    required property bool isResolving
    required property string errorMessage

    y: rowTop
    height: extent
}
