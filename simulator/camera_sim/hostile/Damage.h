/// @file
/// What a kind of spoiling does to the bytes of a reply.
#ifndef CAMERA_SIM_HOSTILE_DAMAGE_H
#define CAMERA_SIM_HOSTILE_DAMAGE_H

#include "camera_sim/hostile/SpoilKinds.h"

namespace camera_sim {

/// Only the first bytes stay.
void Cut(Spoiled reply);
void FlipBits(Spoiled reply);

/// The value as Content-Length.
void ChangeLength(Spoiled reply);
/// The value in the place of the status line.
void ChangeStatus(Spoiled reply);
/// The value once or very often somewhere in the head.
void GrowHead(Spoiled reply);
/// The body in chunks, of which some have the value as their size.
void Chunk(Spoiled reply);

// What changes the body adapts Content-Length to it.

/// The value as the body.
void ChangeBody(Spoiled reply);
/// The value once or very often, anywhere or before an element.
void GrowBody(Spoiled reply);
/// The value in some texts and attributes of the SOAP body that are no numbers.
void FillTexts(Spoiled reply);
/// The value in some numbers of the SOAP body.
void FillNumbers(Spoiled reply);
/// Elements of one namespace with the value as their prefix, declared or not.
void ChangePrefix(Spoiled reply);
/// What reaches over one or more elements is taken out, or comes again elsewhere.
void MoveElements(Spoiled reply);

/// The reply to another request.
void TakeOther(Spoiled reply);
/// A second reply behind the first, the same or another one.
void AddSecond(Spoiled reply);

}  // namespace camera_sim

#endif
