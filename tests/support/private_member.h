#pragma once

/**
 * Names a private member of a class from outside, for fuzzing one operation without the way that leads to it.
 *
 * The language does not check access in an explicit instantiation. A tag names the member's type and declares
 * `friend Type memberOf(Tag)`; `template struct PrivateMember<Tag, &Class::member>` defines that function.
 */
template <typename Tag, typename Tag::Type member>
struct PrivateMember
{
    friend typename Tag::Type memberOf(Tag /*tag*/) { return member; }
};
