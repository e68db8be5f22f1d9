#pragma once

#include <QByteArray>

#include <optional>
#include <pugixml.hpp>

/// The numbers by which one part of a set refers to another.
namespace ostra {

enum class ReferenceKind { Pointee, Group, Track, Groove };

struct Reference {
    ReferenceKind kind;
    QByteArray id;
};

/// What an element refers to; nothing for "none" (-1) and for elements that refer to nothing.
std::optional<Reference> referenceIn(pugi::xml_node element);
/// The value of the element when it refers to `id` instead.
QByteArray redirected(pugi::xml_node element, const Reference &reference, const QByteArray &id);

std::size_t countChildren(pugi::xml_node list);

/// Calls `visit` for an element and everything below it, in document order.
template <typename Visit>
void forEachElement(pugi::xml_node element, Visit visit)
{
    if (!element) {
        return;
    }
    visit(element);
    for (auto child = element.first_child(); child; child = child.next_sibling()) {
        forEachElement<Visit &>(child, visit);
    }
}

} // namespace ostra
