/* placeholder */ typedef int korvex2_am_rot_placeholder;
