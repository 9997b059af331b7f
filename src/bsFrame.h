// placeholder, replaced while the room is built
